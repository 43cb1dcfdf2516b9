#include "foundation/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

#include "foundation/Failure.h"
#include "foundation/paths.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "orvane-";

fs::path folderForTemporaryFiles() {
  const char* const chosen = std::getenv("TMPDIR");
  return chosen == nullptr || *chosen == '\0' ? "/var/tmp" : chosen;
}

// Opens a folder of this user with a lock, which ends with the process. Empty if another process
// has it.
std::optional<FileDescriptor> locked(const fs::path& folder) {
  auto opened = FileDescriptor::tryToOpen(pathText(folder), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
  if (!opened || opened->status().st_uid != geteuid()) return std::nullopt;
  if (flock(opened->number(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  return opened;
}

void removeLeftovers(const fs::path& parent) {
  std::error_code error, ignored;
  fs::directory_iterator entry(parent, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (!entry->path().filename().native().starts_with(kPrefix)) continue;
    if (locked(entry->path())) fs::remove_all(entry->path(), ignored);
  }
}

fs::path newFolder(const fs::path& parent) {
  removeLeftovers(parent);
  std::string name = parent / (std::string(kPrefix) + "XXXXXX");
  if (mkdtemp(name.data()) == nullptr) throw systemFailure(errno, pathText(parent));
  return name;
}

}  // namespace

TemporaryFolder::TemporaryFolder() : TemporaryFolder(pathText(folderForTemporaryFiles())) {}

// If the folder cannot be locked, no other process can lock and remove it.
TemporaryFolder::TemporaryFolder(const std::wstring& parent)
    : native_(newFolder(nativePath(parent))), lock_(locked(native_)) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(native_, ignored);
}

std::wstring TemporaryFolder::path() const {
  return pathText(native_);
}

}  // namespace orvane
