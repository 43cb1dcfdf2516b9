#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// See TiffFile::deletePage.
void removeTiffPage(const std::wstring& path, std::int32_t page);

}  // namespace orvane
