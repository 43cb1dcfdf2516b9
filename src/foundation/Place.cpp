#include "foundation/Place.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>

#include "foundation/Failure.h"
#include "foundation/letter_case.h"
#include "foundation/paths.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxLinks = 40;  // the system's own limit

// Removes the first name of a native path with its separator.
std::string takeName(std::string& path) {
  const std::size_t end = std::min(path.find('/'), path.size());
  std::string name = path.substr(0, end);
  path.erase(0, end + 1);
  return name;
}

// Fails if the working directory was removed.
fs::path currentFolder(const std::wstring& path) {
  std::error_code error;
  fs::path folder = fs::current_path(error);
  if (error) throw systemFailure(error.value(), path);
  return folder;
}

std::string targetOf(const std::string& link, const std::wstring& path) {
  std::error_code error;
  std::string target = fs::read_symlink(link, error);
  if (error) throw systemFailure(error.value(), path);
  return target;
}

}  // namespace

/// Resolves the links in paths, and examines each name only once.
class LinkResolver {
 public:
  Place placeOf(const std::wstring& path) {
    const Place place = placeAsSpelled(path);
    return place.exists() ? place : placeAsSpelled(existingPath(path));
  }

 private:
  struct Entry {
    std::optional<FileIdentity> identity{};
    bool isLink = false;
  };

  Place placeAsSpelled(const std::wstring& path) {
    std::string rest = nativePath(path);
    if (!rest.starts_with('/')) rest = currentFolder(path) / rest;
    Place place = root(path);
    for (int links = 0; !rest.empty();) {
      const std::string name = takeName(rest);
      if (name.empty() || name == ".") continue;
      if (name == "..") {
        leave(place);
        continue;
      }
      place.path_ += '/' + name;
      const Entry entry = examined(place.path_, path);
      place.levels_.push_back(entry.identity);
      if (!entry.isLink) continue;
      if (++links > kMaxLinks) throw systemFailure(ELOOP, path);
      const std::string target = targetOf(place.path_, path);
      rest = target + '/' + rest;
      if (target.starts_with('/')) {
        place = root(path);
      } else {
        leave(place);
      }
    }
    return place;
  }

  Place root(const std::wstring& path) {
    Place place;
    place.levels_.front() = examined("/", path).identity;
    return place;
  }

  static void leave(Place& place) {
    if (place.path_.empty()) return;
    place.path_.erase(place.path_.rfind('/'));
    place.levels_.pop_back();
  }

  const Entry& examined(const std::string& native, const std::wstring& path) {
    const auto [at, isNew] = entries_.try_emplace(native);
    struct stat status {};
    if (isNew && lstat(native.c_str(), &status) == 0) {
      at->second = {identityOf(status), S_ISLNK(status.st_mode)};
    } else if (isNew && errno != ENOENT && errno != ENOTDIR) {
      throw systemFailure(errno, path);
    }
    return at->second;
  }

  std::unordered_map<std::string, Entry> entries_;
};

bool Place::isWithin(const Place& folder) const {
  const bool isNamedSo = path_.starts_with(folder.path_) &&
                         (path_.size() == folder.path_.size() || path_[folder.path_.size()] == '/');
  const std::optional<FileIdentity>& identity = folder.levels_.back();
  return isNamedSo ||
         (identity && std::find(levels_.begin(), levels_.end(), identity) != levels_.end());
}

Place resolvedPlace(const std::wstring& path) {
  return LinkResolver().placeOf(path);
}

std::vector<Place> resolvedPlaces(const std::vector<std::wstring>& paths) {
  LinkResolver resolver;
  std::vector<Place> places;
  places.reserve(paths.size());
  for (const std::wstring& path : paths) places.push_back(resolver.placeOf(path));
  return places;
}

}  // namespace orvane
