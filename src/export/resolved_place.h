#pragma once

#include <filesystem>
#include <string>

/// Where a path really leads, for the guards of the scan tree.
namespace orvane {

/// The absolute place behind a path text, all symbolic links followed: also those in the middle
/// and those that lead to nothing yet, because a write through one would create its target. Parts
/// that do not exist stay as they are. Throws Failure when a part cannot be looked at and for
/// links that go in a circle.
std::filesystem::path resolvedPlace(const std::wstring& path);

/// True when a resolved place is `folder` or lies anywhere below it. Folders are compared as the
/// file system knows them, so that a bind mount or a name in other letter case is no way around.
bool liesWithin(const std::filesystem::path& place, const std::filesystem::path& folder);

}  // namespace orvane
