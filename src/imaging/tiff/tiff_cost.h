#pragma once

#include <cstdint>

#include "imaging/tiff/TiffHandle.h"
#include "imaging/tiff/TiffLayout.h"

namespace orvane {

/// The most memory that a page takes, in bytes.
struct PageCost {
  std::uint64_t file = 0;      ///< of its file: all of a small one, as long as the page lives
  std::uint64_t blocks = 0;    ///< of encoded strips or tiles, as many as are held at a time
  std::uint64_t decoding = 0;  ///< of the pixels, and of what decoding them takes
  std::uint64_t total() const { return file + blocks + decoding; }
};

PageCost costOf(const TiffHandle& tiff, const TiffLayout& layout);

/// Throws Failure for a page whose decoding would need more than 1 GiB.
void requireMemory(const TiffHandle& tiff, const TiffLayout& layout);

}  // namespace orvane
