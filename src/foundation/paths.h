#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FileDescriptor.h"

/// Paths. Inside the program a path is a text with `\` as separator, joined without normalisation.
/// These functions convert it to the native form, and find the file that it leads to.
///
/// A byte of a native name that is not UTF-8, and a `\` in a native name, become the code point
/// U+DC00 + byte. Every name on the disk therefore has exactly one text, which converts back to the
/// same bytes.
namespace orvane {

/// The native path of a path text, for system calls: `\` becomes `/`; nothing else is changed. A
/// text that begins with `\` is absolute. Throws Failure if the text contains a NUL or cannot be
/// encoded.
std::string nativePath(std::wstring_view pathText);

/// The native path of a path text as people read it: without dots and doubled separators, and with
/// U+FFFD for a byte that is not UTF-8. Throws as `nativePath` does.
std::wstring nativeText(std::wstring_view pathText);

/// The path text of a native path, such as the program's folder: `/` becomes `\`.
std::wstring pathText(const std::filesystem::path& native);

/// The text of one directory entry's name.
std::wstring entryText(std::string_view entryName);

/// The path of a file or folder of the scan tree as it is spelled on the disk. A station that comes
/// from Windows has names such as `0001.TIF` or `DOC.DAT`, which the program requests in other
/// letter case.
///
/// If a path at or below `Batchs` of the program's folder does not exist as spelled, its names are
/// looked up one by one: the exact spelling is preferred, then the first entry that differs only in
/// letter case. Every other path is returned unchanged: one outside the scan tree, one that
/// contains "..", one that exists, and one that does not exist in any spelling.
std::wstring existingPath(const std::wstring& pathText);

/// The spelling of `name` in `folder` (which ends in a separator): the exact one is preferred, then
/// the first entry that differs only in letter case. Empty if the folder certainly has neither. An
/// entry that cannot be examined counts as existing, because its use reports the reason.
/// Throws Failure for a folder that does not exist or cannot be listed.
std::optional<std::wstring> entryInAnyCase(const std::wstring& folder, const std::wstring& name);

/// True if two existing paths differ only in letter case and the file system ignores case, so that
/// it lists one of the two spellings. Inodes are not compared, because exfat-fuse gives each
/// spelling its own. Throws Failure for a folder that cannot be listed.
bool isOneEntryInAnyCase(const std::wstring& path, const std::wstring& otherPath);

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
