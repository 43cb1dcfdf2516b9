#include "imaging/page/mirror.h"

#include <algorithm>
#include <array>

#include "imaging/page/pixel_size.h"
#include "imaging/page/samples.h"

namespace orvane {
namespace {

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

// The reversed row begins with the padding; a shift to the left takes it out again.
void mirrorBitRow(std::uint8_t* row, std::size_t rowBytes, unsigned padding) {
  std::reverse(row, row + rowBytes);
  for (std::size_t i = 0; i < rowBytes; ++i) row[i] = kReversedBits[row[i]];
  if (padding == 0) return;
  for (std::size_t i = 0; i < rowBytes; ++i) {
    const unsigned next = i + 1 < rowBytes ? row[i + 1] : 0;
    row[i] = static_cast<std::uint8_t>(row[i] << padding | next >> (8 - padding));
  }
}

void mirrorShallowRow(std::uint8_t* row, const Raster& form) {
  const unsigned bits = form.bitsPerSample;
  const std::size_t samples = form.samplesPerPixel;
  if (form.width < 2) return;
  for (std::size_t left = 0, right = form.width - 1; left < right; ++left, --right) {
    for (std::size_t s = 0; s < samples; ++s) {
      const std::uint8_t leftValue = shallowSample(row, left * samples + s, bits);
      const std::uint8_t rightValue = shallowSample(row, right * samples + s, bits);
      putShallowSample(row, left * samples + s, bits, rightValue);
      putShallowSample(row, right * samples + s, bits, leftValue);
    }
  }
}

}  // namespace

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

void mirrorRows(Raster& raster) {
  const std::size_t rowBytes = raster.rowBytes();
  for (std::uint32_t top = 0; top < raster.height / 2; ++top) {
    std::uint8_t* upper = raster.row(top);
    std::swap_ranges(upper, upper + rowBytes, raster.row(raster.height - 1 - top));
  }
}

}  // namespace orvane
