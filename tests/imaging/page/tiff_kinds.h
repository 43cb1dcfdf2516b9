#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <tiffio.h>
#include <vector>

namespace orvane::test {

/// A kind of TIFF page that libtiff writes; tiffcp makes the other kinds of it.
struct TiffKind {
  std::uint16_t bits = 8;
  std::uint16_t samples = 1;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint32_t rowsPerStrip = 11;  ///< 0: tiles of 32 x 16
  bool separate = false;
  std::string mode = "wl";  ///< libtiff's: wl or wb, and 8 for BigTIFF
  std::uint16_t predictor = 0;
  std::vector<std::uint16_t> extras = {};
  std::uint32_t width = 61;
  std::uint32_t height = 45;
};

/// Writes `pages` pages of a kind, each with other pixels.
void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages = 1);

/// One entry of a directory made by hand, its value in the entry itself.
struct RawEntry {
  std::uint16_t tag;
  std::uint16_t type;  ///< 3: 16 bits, 4: 32 bits
  std::uint32_t count;
  std::uint32_t value;
};

/// A little-endian TIFF file made by hand: one directory, whose link leads to `next`, then `data`.
std::string rawTiff(const std::vector<RawEntry>& entries, std::uint32_t next = 0,
                    const std::string& data = {});

/// Where `rawTiff` puts the data.
std::uint32_t rawDataOffset(const std::vector<RawEntry>& entries);

/// A file of one page of 8-bit gray whose one strip is `strip`, with some entries changed or added.
/// Every entry for the place or size of the strip gets its value here.
std::string rawGrayPage(std::uint32_t width, std::uint32_t height, const std::string& strip,
                        const std::vector<RawEntry>& changes = {}, std::uint32_t next = 0);

}  // namespace orvane::test
