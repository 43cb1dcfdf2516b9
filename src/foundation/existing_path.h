#pragma once

#include <optional>
#include <string>

namespace orvane {

/// Where a file or folder of the scan tree really is. A station that comes from Windows has names
/// such as `0001.TIF` or `DOC.DAT` that are asked for in other letter case.
///
/// A path below (or at) `Batchs` of the program's folder that leads nowhere as it is spelled is
/// searched for from there on, name by name: the exact spelling wins, else the first entry that
/// differs in letter case only. The answer is the path text with the names as they are on the disk.
/// Every other path comes back as it is: one outside the scan tree, one with ".." in it, one that
/// is there, and one that is not there in any spelling. What creates a file or folder under a name
/// of its own does not ask here.
std::wstring existingPath(const std::wstring& pathText);

/// The name under which `folder` (which ends in a separator) holds `name`: the exact spelling wins,
/// else the first entry that differs in letter case only. Nothing when it certainly holds none.
/// An entry that cannot be looked at counts as there: whoever uses it will tell why. Throws Failure
/// for a folder that is not there or cannot be listed.
std::optional<std::wstring> entryInAnyCase(const std::wstring& folder, const std::wstring& name);

/// True when two paths, both of which exist, differ in letter case only and the file system does
/// not tell their cases apart: of two spellings it lists one. The inodes do not show it everywhere;
/// exfat-fuse gives each spelling its own. Throws Failure for a folder that cannot be listed.
bool isOneEntryInAnyCase(const std::wstring& path, const std::wstring& otherPath);

}  // namespace orvane
