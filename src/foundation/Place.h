#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/FileState.h"

namespace orvane {

/// Where a file or folder is: its absolute path with all symbolic links resolved, including those
/// to a missing target, which a write would create. Parts that do not exist are kept.
class Place {
 public:
  std::string path() const { return path_.empty() ? "/" : path_; }
  bool exists() const { return levels_.back().has_value(); }

  /// True if this is `folder` or below it. Folders are compared by device and inode, so a bind
  /// mount or a name in other letter case makes no difference.
  bool isWithin(const Place& folder) const;

 private:
  friend class LinkResolver;

  std::string path_;  // without a separator at the end: empty for the root
  std::vector<std::optional<FileIdentity>> levels_{std::nullopt};  // of the root and of each name
};

/// The place of a file or folder. A path that does not exist as spelled is looked up with
/// `existingPath`. Throws Failure if a part cannot be examined, and for a cycle of links.
Place resolvedPlace(const std::wstring& path);

/// The places of several paths, which may share folders: each folder is examined once.
std::vector<Place> resolvedPlaces(const std::vector<std::wstring>& paths);

}  // namespace orvane
