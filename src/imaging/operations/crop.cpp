#include "imaging/operations/crop.h"

#include <algorithm>
#include <cstring>

#include "foundation/Failure.h"

namespace orvane {
namespace {

// Copies `bits` bits from bit `firstBit` of `from` to the beginning of `to`. The padding after the
// last bit becomes 0.
void copyBits(const std::uint8_t* from, std::size_t firstBit, std::size_t bits, std::uint8_t* to) {
  const std::uint8_t* source = from + firstBit / 8;
  const int shift = static_cast<int>(firstBit % 8);
  const std::size_t bytes = (bits + 7) / 8;
  const std::size_t sourceBytes = (static_cast<std::size_t>(shift) + bits + 7) / 8;

  if (shift == 0) {
    std::memcpy(to, source, bytes);
  } else {
    for (std::size_t i = 0; i < bytes; ++i) {
      const int next = i + 1 < sourceBytes ? source[i + 1] : 0;
      to[i] = static_cast<std::uint8_t>((source[i] << shift) | (next >> (8 - shift)));
    }
  }
  if (bits % 8 != 0) to[bytes - 1] &= static_cast<std::uint8_t>(0xFF00u >> (bits % 8));
}

}  // namespace

Raster crop(const Raster& raster, std::int32_t left, std::int32_t top, std::int32_t width,
            std::int32_t height) {
  const auto clipped = [](std::int64_t value, std::uint32_t size) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, size));
  };
  const std::uint32_t x0 = clipped(left, raster.width);
  const std::uint32_t x1 = clipped(std::int64_t{left} + width, raster.width);
  const std::uint32_t y0 = clipped(top, raster.height);
  const std::uint32_t y1 = clipped(std::int64_t{top} + height, raster.height);
  if (x1 <= x0 || y1 <= y0) throw Failure("nothing of the page is left after cropping");

  Raster part = emptyRaster(raster, x1 - x0, y1 - y0);
  const std::size_t bitsPerPixel = raster.bitsPerPixel();
  for (std::uint32_t y = 0; y < part.height; ++y) {
    copyBits(raster.row(y0 + y), x0 * bitsPerPixel, part.width * bitsPerPixel, part.row(y));
  }
  return part;
}

}  // namespace orvane
