#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// See TiffFile::deletePage.
void removeTiffPage(const std::wstring& path, std::int32_t page);

/// Writes page `page` of `path`, from 1, to a file of its own, `target`, which is created. Its
/// strips, tiles and fields are copied byte for byte; only offsets change, and PageNumber, where it
/// is stated. Throws Failure, and leaves no file then.
void extractTiffPage(const std::wstring& path, std::int32_t page, const std::wstring& target);

}  // namespace orvane
