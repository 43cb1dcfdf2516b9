#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvane {

/// The path of a file or folder of the scan tree as it is spelled on the disk. A station that comes
/// from Windows has names such as `0001.TIF` or `DOC.DAT`, which are asked for in other letter
/// case.
///
/// A path at or below `Batchs` of the program's folder that does not exist as it is spelled is
/// searched for from there on, name by name: the exact spelling is preferred, then the first entry
/// that differs in letter case only. Every other path is returned unchanged: one outside the scan
/// tree, one with ".." in it, one that exists, and one that does not exist in any spelling. Code
/// that creates a file or folder under a name of its own does not use this function.
std::wstring existingPath(const std::wstring& pathText);

/// The name under which `folder` (which ends in a separator) has `name`: the exact spelling is
/// preferred, then the first entry that differs in letter case only. Nothing when it certainly has
/// neither. An entry that cannot be looked at counts as existing; its use will fail and say why.
/// Throws Failure for a folder that does not exist or cannot be listed.
std::optional<std::wstring> entryInAnyCase(const std::wstring& folder, const std::wstring& name);

/// True when two existing paths differ in letter case only and the file system ignores case: it
/// lists one of the two spellings. Inodes do not show this everywhere; exfat-fuse gives each
/// spelling its own. Throws Failure for a folder that cannot be listed.
bool isOneEntryInAnyCase(const std::wstring& path, const std::wstring& otherPath);

/// The absolute path of a file or folder with all symbolic links resolved: also those in the middle
/// and those to a missing target, which a write would create. Parts that do not exist stay as they
/// are. A path in the scan tree is looked up with `existingPath` first. Throws Failure when a part
/// cannot be looked at and for a cycle of links.
std::filesystem::path resolvedPlace(const std::wstring& path);

/// True when a resolved path is `folder` or anywhere below it. Folders are compared by their
/// identity in the file system, so a bind mount or a name in other letter case makes no difference.
bool liesWithin(const std::filesystem::path& place, const std::filesystem::path& folder);

}  // namespace orvane
