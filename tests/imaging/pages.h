#pragma once

#include <algorithm>
#include <filesystem>
#include <vector>

#include "imaging/Random.h"
#include "imaging/raster/Raster.h"
#include "support/TempStation.h"

namespace orvane::test {

inline RasterForm form(ColourModel model, std::uint16_t bits, std::uint16_t samples = 1,
                       ExtraSample extra = ExtraSample::None) {
  RasterForm form{bits, samples, model, extra};
  if (model != ColourModel::Palette) return form;
  Random random(bits);
  form.palette.resize(std::size_t{3} << bits);
  for (auto& entry : form.palette) entry = static_cast<std::uint16_t>(random.below(65536));
  return form;
}

/// A page like a scan, in the bytes of any form: paper with a soft shade, text-like strokes, a
/// picture and noise.
inline Raster scannedPage(Random& random, const RasterForm& form, std::uint32_t width,
                          std::uint32_t height) {
  Raster page = emptyRaster(form, width, height);
  const std::size_t samples = form.samplesPerPixel;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::size_t i = 0; i < page.rowBytes(); ++i) {
      const std::size_t x = i / samples, sample = i % samples;
      std::size_t value = 240 - 4 * sample - (x + y) % 512 / 256;
      if (x % 97 > 60 && y % 83 > 40)
        value = (2 * x + y * (sample + 1)) % 156 / 2 + 40 + 20 * sample;
      if (y / 12 % 3 == 1 && (x / 5 * 2654435761u >> 13) % 3 == 0) value = 30 + 2 * sample;
      page.row(y)[i] = static_cast<std::uint8_t>(value + random.below(4));
    }
  }
  clearPadding(page);
  return page;
}

/// A 1-bit page whose rows are runs of up to `longestRun` pixels, some of them like the row above.
inline Raster bilevelPage(Random& random, std::uint32_t longestRun, std::uint32_t width,
                          std::uint32_t height) {
  Raster page = emptyRaster(RasterForm{}, width, height);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* row = page.row(y);
    if (y > 0 && random.below(3) > 0) std::copy_n(page.row(y - 1), page.rowBytes(), row);
    const bool everywhere = y == 0 || random.below(3) == 0;
    for (std::uint32_t x = 0, black = 0; x < width; black ^= 1) {
      const bool drawn = everywhere || random.below(8) == 0;
      for (std::uint32_t end = x + 1 + random.below(longestRun); x < std::min(end, width); ++x) {
        const auto bit = static_cast<std::uint8_t>(0x80 >> x % 8);
        if (drawn)
          row[x / 8] = static_cast<std::uint8_t>(black ? row[x / 8] | bit : row[x / 8] & ~bit);
      }
    }
  }
  return page;
}

/// Writes 8-bit gray or RGB pixels as PGM or PPM, for tools that read nothing else.
inline void writePnm(const std::filesystem::path& file, const Raster& raster) {
  writeBytes(file, (raster.samplesPerPixel == 3 ? "P6 " : "P5 ") + std::to_string(raster.width) +
                       " " + std::to_string(raster.height) + " 255\n" +
                       std::string(raster.pixels.begin(), raster.pixels.end()));
}

}  // namespace orvane::test
