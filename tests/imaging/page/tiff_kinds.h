#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <tiffio.h>
#include <vector>

namespace orvane::test {

/// A kind of TIFF page that a scanner may write.
struct TiffKind {
  std::uint16_t bits = 8;
  std::uint16_t samples = 1;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint32_t rowsPerStrip = 11;  ///< 0: tiles of 32 x 16
  bool separate = false;
  std::string mode = "wl";  ///< libtiff's: wl or wb, and 8 for BigTIFF
  std::uint16_t orientation = ORIENTATION_TOPLEFT;
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  std::uint16_t predictor = 0;
  std::vector<std::uint16_t> extras = {};
  std::uint32_t g3Options = 0;
  std::uint16_t subsampling = 1;  ///< YCbCr, both ways
  std::uint32_t width = 61;
  std::uint32_t height = 45;
  bool directoryFirst = false;  ///< in front of the image data
};

/// Writes `pages` pages of a kind with libtiff, each with other pixels.
void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages = 1);

/// One entry of a directory made by hand, its value in the entry itself.
struct RawEntry {
  std::uint16_t tag;
  std::uint16_t type;  ///< 3: 16 bits, 4: 32 bits
  std::uint32_t count;
  std::uint32_t value;
};

/// A little-endian TIFF file made by hand: one directory, whose link leads to `next`, then `data`
/// at the offset `rawDataOffset(entries)`.
std::string rawTiff(const std::vector<RawEntry>& entries, std::uint32_t next = 0,
                    const std::string& data = {});
std::uint32_t rawDataOffset(const std::vector<RawEntry>& entries);

}  // namespace orvane::test
