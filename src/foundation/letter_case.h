#pragma once

#include <optional>
#include <string>

/// Files that are found in another letter case than the one in which they are requested.
namespace orvane {

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

}  // namespace orvane
