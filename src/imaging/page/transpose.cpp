#include "imaging/page/transpose.h"

#include <algorithm>

#include "imaging/page/pixel_size.h"
#include "imaging/page/samples.h"

namespace orvane {
namespace {

// Eight rows of eight bits, the first row in the highest byte (Hacker's Delight, section 7-3).
std::uint64_t transposeBitBlock(std::uint64_t block) {
  std::uint64_t swap = (block ^ block >> 7) & 0x00AA00AA00AA00AAU;
  block ^= swap ^ swap << 7;
  swap = (block ^ block >> 14) & 0x0000CCCC0000CCCCU;
  block ^= swap ^ swap << 14;
  swap = (block ^ block >> 28) & 0x00000000F0F0F0F0U;
  return block ^ swap ^ swap << 28;
}

std::uint64_t bitBlockAt(const Raster& raster, std::uint32_t y, std::size_t byte) {
  std::uint64_t block = 0;
  for (std::uint32_t i = 0; i < 8; ++i) {
    block = block << 8 | (y + i < raster.height ? raster.row(y + i)[byte] : 0U);
  }
  return block;
}

void transposeBits(const Raster& from, Raster& to) {
  for (std::uint32_t x = 0; x < from.width; x += 8) {
    const std::uint32_t rows = std::min<std::uint32_t>(8, from.width - x);
    for (std::uint32_t y = 0; y < from.height; y += 8) {
      const std::uint64_t block = transposeBitBlock(bitBlockAt(from, y, x / 8));
      for (std::uint32_t i = 0; i < rows; ++i) {
        to.row(x + i)[y / 8] = static_cast<std::uint8_t>(block >> (56 - 8 * i));
      }
    }
  }
}

void transposeShallowSamples(const Raster& from, Raster& to) {
  const unsigned bits = from.bitsPerSample;
  const std::size_t samples = from.samplesPerPixel;
  for (std::uint32_t y = 0; y < from.height; ++y) {
    for (std::uint32_t x = 0; x < from.width; ++x) {
      for (std::size_t s = 0; s < samples; ++s) {
        const std::uint8_t value = shallowSample(from.row(y), x * samples + s, bits);
        putShallowSample(to.row(x), y * samples + s, bits, value);
      }
    }
  }
}

// In squares, so that the rows written to stay in the cache.
template <typename Pixel>
void transposeWholeBytes(const Raster& from, Raster& to) {
  constexpr std::uint32_t kSquare = 32;
  const auto* source = reinterpret_cast<const Pixel*>(from.pixels.data());
  auto* target = reinterpret_cast<Pixel*>(to.pixels.data());
  for (std::uint32_t top = 0; top < from.height; top += kSquare) {
    const std::uint32_t bottom = std::min(top + kSquare, from.height);
    for (std::uint32_t left = 0; left < from.width; left += kSquare) {
      const std::uint32_t right = std::min(left + kSquare, from.width);
      for (std::size_t x = left; x < right; ++x) {
        for (std::size_t y = top; y < bottom; ++y) {
          target[x * from.height + y] = source[y * from.width + x];
        }
      }
    }
  }
}

}  // namespace

Raster transposed(const Raster& raster) {
  Raster result = emptyRaster(raster, raster.height, raster.width);
  if (raster.bitsPerPixel() == 1) {
    transposeBits(raster, result);
  } else if (raster.bitsPerSample < 8) {
    transposeShallowSamples(raster, result);
  } else {
    withPixelOf(raster.bitsPerPixel() / 8U,
                [&](auto pixel) { transposeWholeBytes<decltype(pixel)>(raster, result); });
  }
  return result;
}

}  // namespace orvane
