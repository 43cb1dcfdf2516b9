#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <tiffio.h>
#include <vector>

namespace orvane::test {

/// A kind of page that libtiff writes in plain strips; tiffcp makes the other forms of it.
struct TiffKind {
  std::uint16_t bits = 8;
  std::uint16_t samples = 1;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t compression = COMPRESSION_NONE;
  std::vector<std::uint16_t> extras = {};
  std::uint32_t width = 61;
  std::uint32_t height = 45;
  std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
};

/// Writes `pages` pages of a kind, each with other pixels.
void writeTiff(const std::filesystem::path& file, const TiffKind& kind, int pages = 1);

/// The offset of the directory of a little-endian file; libtiff writes it after the strips, and the
/// first strip at 8.
std::uint32_t directoryOf(const std::string& file);

/// One entry of a directory made by hand, its value in the entry itself.
struct RawEntry {
  std::uint16_t tag;
  std::uint16_t type;  ///< 3: 16 bits, 4: 32 bits
  std::uint32_t count;
  std::uint32_t value;
};

/// A little-endian file made by hand: a directory, whose link is `next`, for a page of 8-bit
/// gray, and after it the one strip. Some entries are changed or added; those for the place or
/// size of the strip get their values here. `front` precedes the directory; usually it is a
/// header.
std::string rawGrayPage(std::uint32_t width, std::uint32_t height, const std::string& strip,
                        const std::vector<RawEntry>& changes = {}, std::uint32_t next = 0,
                        const std::string& front = std::string("II*\0\x08\0\0\0", 8));

/// The same around a stream of JPEG in colour, as pages of the old compression 6 hold it.
std::string oldStyleJpegPage(std::uint32_t width, std::uint32_t height, const std::string& jpeg);

}  // namespace orvane::test
