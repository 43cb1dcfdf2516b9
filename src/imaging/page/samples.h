#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/page/Raster.h"

/// Single samples of a row, and colours as the eye weighs them.
namespace orvane {

/// Sample `index` of a row of 1, 2, 4 or 8-bit samples.
inline std::uint8_t shallowSample(const std::uint8_t* row, std::size_t index, unsigned bits) {
  const std::size_t position = index * bits;
  const unsigned shift = 8 - bits - static_cast<unsigned>(position % 8);
  return static_cast<std::uint8_t>(row[position / 8] >> shift & ((1U << bits) - 1));
}

/// Puts a sample of 1, 2, 4 or 8 bits into a row.
inline void putShallowSample(std::uint8_t* row, std::size_t index, unsigned bits,
                             std::uint8_t value) {
  const std::size_t position = index * bits;
  const unsigned shift = 8 - bits - static_cast<unsigned>(position % 8);
  const unsigned mask = ((1U << bits) - 1) << shift;
  std::uint8_t& byte = row[position / 8];
  byte = static_cast<std::uint8_t>((byte & ~mask) | static_cast<unsigned>(value) << shift);
}

/// The brightness of a colour in the scale of its components (ITU-R BT.601 weights).
inline std::uint32_t brightness(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return (299 * red + 587 * green + 114 * blue + 500) / 1000;
}

/// The brightness of a palette entry, 0 to 65535.
inline std::uint32_t paletteBrightness(const Raster& raster, std::size_t entry) {
  const std::size_t entries = raster.palette.size() / 3;
  return brightness(raster.palette[entry], raster.palette[entries + entry],
                    raster.palette[2 * entries + entry]);
}

}  // namespace orvane
