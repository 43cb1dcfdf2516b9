#include "export/resolved_place.h"

#include <cerrno>
#include <deque>
#include <system_error>

#include "foundation/Failure.h"
#include "foundation/existing_path.h"
#include "foundation/path_text.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxLinks = 40;  // the system's own limit

bool isLink(const fs::path& place, const std::wstring& path) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(place, error);
  if (status.type() == fs::file_type::none) throw systemFailure(error.value(), path);
  return status.type() == fs::file_type::symlink;
}

bool isSameFolder(const fs::path& a, const fs::path& b) {
  std::error_code ignored;  // what does not exist has no identity but its name
  return a == b || fs::equivalent(a, b, ignored);
}

}  // namespace

fs::path resolvedPlace(const std::wstring& path) {
  // A process whose working directory was removed has none; an absolute path does not need it.
  const fs::path native = nativePath(existingPath(path));
  const fs::path whole = native.is_absolute() ? native : fs::current_path() / native;
  std::deque<fs::path> rest(whole.begin(), whole.end());
  fs::path place = "/";
  int links = 0;
  while (!rest.empty()) {
    const fs::path part = rest.front();
    rest.pop_front();
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      place = place.parent_path();
      continue;
    }
    place /= part;  // "/" starts anew
    if (!isLink(place, path)) continue;
    if (++links > kMaxLinks) throw systemFailure(ELOOP, path);
    const fs::path target = fs::read_symlink(place);
    place = place.parent_path();
    rest.insert(rest.begin(), target.begin(), target.end());
  }
  return place;
}

bool liesWithin(const fs::path& place, const fs::path& folder) {
  for (fs::path level = place;; level = level.parent_path()) {
    if (isSameFolder(level, folder)) return true;
    if (level == level.root_path()) return false;
  }
}

}  // namespace orvane
