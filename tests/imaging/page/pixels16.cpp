#include "imaging/page/pixels16.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "support/command.h"

namespace orvane::test {
namespace {

std::uint32_t sample(const Raster& raster, std::uint32_t x, std::uint32_t y, std::uint32_t s) {
  const std::size_t index = std::size_t{x} * raster.samplesPerPixel + s;
  const std::uint8_t* row = raster.pixels.data() + y * raster.rowBytes();
  if (raster.bitsPerSample == 16) return reinterpret_cast<const std::uint16_t*>(row)[index];
  std::uint32_t value = 0;
  for (std::size_t bit = index * raster.bitsPerSample; bit < (index + 1) * raster.bitsPerSample;
       ++bit) {
    value = value << 1 | (row[bit / 8] >> (7 - bit % 8) & 1U);
  }
  return value;
}

void addPixel(const Raster& raster, std::uint32_t x, std::uint32_t y, Pixels16& pixels) {
  const std::uint32_t scale = 0xFFFFU / ((1U << raster.bitsPerSample) - 1);
  const auto scaled = [&](std::uint32_t s) {
    return static_cast<std::uint16_t>(sample(raster, x, y, s) * scale);
  };
  if (raster.model == ColourModel::Palette) {
    const std::size_t entries = raster.palette.size() / 3;
    for (std::size_t part = 0; part < 3; ++part) {
      pixels.push_back(raster.palette[part * entries + sample(raster, x, y, 0)]);
    }
  } else if (raster.model == ColourModel::Rgb || raster.model == ColourModel::Cmyk) {
    const std::uint32_t colours = raster.model == ColourModel::Rgb ? 3 : 4;
    for (std::uint32_t s = 0; s < colours; ++s) pixels.push_back(scaled(s));
  } else {
    const bool inverse = raster.model == ColourModel::MinIsWhite;
    const auto gray = static_cast<std::uint16_t>(inverse ? 0xFFFF - scaled(0) : scaled(0));
    pixels.insert(pixels.end(), 3, gray);
  }
  if (raster.extraSample == ExtraSample::UnassociatedAlpha) {
    pixels.push_back(scaled(raster.samplesPerPixel - 1U));
  }
}

}  // namespace

Pixels16 pixelsOf(const Raster& raster) {
  Pixels16 pixels;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    for (std::uint32_t x = 0; x < raster.width; ++x) addPixel(raster, x, y, pixels);
  }
  return pixels;
}

Pixels16 judgedPixels(const std::filesystem::path& file, const std::string& channels,
                      const std::string& options) {
  const std::string bytes = outputOf("convert -quiet " + quoted(file) + " -auto-orient " + options +
                                     " -depth 16 -endian LSB " + channels + ":- 2>/dev/null");
  Pixels16 pixels(bytes.size() / 2);
  std::memcpy(pixels.data(), bytes.data(), pixels.size() * 2);
  return pixels;
}

int largestDifference(const Pixels16& left, const Pixels16& right) {
  if (left.size() != right.size()) return 1 << 20;
  int largest = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    largest = std::max(largest, std::abs(int{left[i]} - int{right[i]}));
  }
  return largest;
}

}  // namespace orvane::test
