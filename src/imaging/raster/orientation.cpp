#include "imaging/raster/orientation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "imaging/raster/Raster.h"

namespace orvane {
namespace {

template <std::size_t Size>
using Pixel = std::array<std::uint8_t, Size>;

/// Calls `work` with a Pixel of `bytes` bytes, so that loops over whole-byte pixels are compiled
/// for their size. The sizes are those of 1 to 5 samples of 8 or 16 bits.
template <typename Work>
void withPixelOf(std::size_t bytes, Work work) {
  switch (bytes) {
    case 1:
      return work(Pixel<1>());
    case 2:
      return work(Pixel<2>());
    case 3:
      return work(Pixel<3>());
    case 4:
      return work(Pixel<4>());
    case 5:
      return work(Pixel<5>());
    case 6:
      return work(Pixel<6>());
    case 8:
      return work(Pixel<8>());
    case 10:
      return work(Pixel<10>());
    default:
      return;
  }
}

constexpr std::array<std::uint8_t, 256> makeReversedBits() {
  std::array<std::uint8_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      if (byte >> bit & 1) table[byte] = static_cast<std::uint8_t>(table[byte] | 0x80U >> bit);
    }
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> kReversedBits = makeReversedBits();

// The reversed row begins with the padding, which a shift to the left removes.
void mirrorBitRow(std::uint8_t* row, std::size_t rowBytes, unsigned padding) {
  std::reverse(row, row + rowBytes);
  for (std::size_t i = 0; i < rowBytes; ++i) row[i] = kReversedBits[row[i]];
  if (padding == 0) return;
  for (std::size_t i = 0; i < rowBytes; ++i) {
    const unsigned next = i + 1 < rowBytes ? row[i + 1] : 0;
    row[i] = static_cast<std::uint8_t>(row[i] << padding | next >> (8 - padding));
  }
}

void mirrorShallowRow(std::uint8_t* row, const Raster& raster) {
  const unsigned bits = raster.bitsPerSample;
  const std::size_t samples = raster.samplesPerPixel;
  if (raster.width < 2) return;
  for (std::size_t left = 0, right = raster.width - 1; left < right; ++left, --right) {
    for (std::size_t s = 0; s < samples; ++s) {
      const std::uint8_t leftValue = shallowSample(row, left * samples + s, bits);
      const std::uint8_t rightValue = shallowSample(row, right * samples + s, bits);
      putShallowSample(row, left * samples + s, bits, rightValue);
      putShallowSample(row, right * samples + s, bits, leftValue);
    }
  }
}

// Swaps left and right, in place. Exact at every depth.
void mirrorColumns(Raster& raster) {
  const std::size_t rowBytes = raster.rowBytes();
  if (raster.bitsPerPixel() == 1) {
    const auto padding = static_cast<unsigned>(rowBytes * 8 - raster.width);
    for (std::uint32_t y = 0; y < raster.height; ++y) {
      mirrorBitRow(raster.row(y), rowBytes, padding);
    }
  } else if (raster.bitsPerSample < 8) {
    for (std::uint32_t y = 0; y < raster.height; ++y) mirrorShallowRow(raster.row(y), raster);
  } else {
    withPixelOf(raster.bitsPerPixel() / 8U, [&](auto pixel) {
      for (std::uint32_t y = 0; y < raster.height; ++y) {
        auto* row = reinterpret_cast<decltype(pixel)*>(raster.row(y));
        std::reverse(row, row + raster.width);
      }
    });
  }
}

// Swaps top and bottom, in place.
void mirrorRows(Raster& raster) {
  const std::size_t rowBytes = raster.rowBytes();
  for (std::uint32_t top = 0; top < raster.height / 2; ++top) {
    std::uint8_t* upper = raster.row(top);
    std::swap_ranges(upper, upper + rowBytes, raster.row(raster.height - 1 - top));
  }
}

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

// The raster with rows and columns swapped. Exact at every depth.
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

/// A TIFF orientation as steps, in their order. Rows are mirrored before a transposition where
/// columns would have to be after it: whole rows are cheaper to move.
struct Steps {
  bool mirrorRowsFirst;
  bool transpose;
  bool mirrorColumns;
  bool mirrorRows;
};

constexpr Steps kSteps[] = {
    {false, false, false, false},  // 1: row 0 top, column 0 left
    {false, false, true, false},   // 2: top, right
    {false, false, true, true},    // 3: bottom, right
    {false, false, false, true},   // 4: bottom, left
    {false, true, false, false},   // 5: left, top
    {true, true, false, false},    // 6: right, top
    {true, true, false, true},     // 7: right, bottom
    {false, true, false, true},    // 8: left, bottom
};

}  // namespace

Raster toUpright(Raster raster, std::uint16_t orientation) {
  if (orientation < 1 || orientation > 8) return raster;
  const Steps& steps = kSteps[orientation - 1];
  if (steps.mirrorRowsFirst) mirrorRows(raster);
  if (steps.transpose) raster = transposed(raster);
  if (steps.mirrorColumns) mirrorColumns(raster);
  if (steps.mirrorRows) mirrorRows(raster);
  return raster;
}

Raster rotateQuarters(Raster raster, int quarterTurns) {
  static constexpr std::uint16_t kOrientationAfterLeftTurns[] = {1, 8, 3, 6};
  return toUpright(std::move(raster), kOrientationAfterLeftTurns[(quarterTurns % 4 + 4) % 4]);
}

}  // namespace orvane
