#include "imaging/codecs/colour_pages.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "support/TempStation.h"

namespace orvane::test {
namespace {

void store(Raster& page, std::uint32_t y, std::size_t sample, std::uint32_t value16) {
  std::uint8_t* row = page.row(y);
  if (page.bitsPerSample == 16) {
    const auto value = static_cast<std::uint16_t>(value16);
    std::memcpy(row + 2 * sample, &value, 2);
    return;
  }
  const std::size_t bit = sample * page.bitsPerSample;
  const std::uint32_t value = value16 >> (16 - page.bitsPerSample);
  row[bit / 8] |= static_cast<std::uint8_t>(value << (8 - page.bitsPerSample - bit % 8));
}

std::uint32_t scannedSample(Random& random, std::uint32_t x, std::uint32_t y,
                            std::uint32_t sample) {
  const bool stroke = y / 12 % 3 == 1 && (x / 5 * 2654435761u >> 13) % 3 == 0;
  const bool picture = x % 97 > 60 && y % 83 > 40;
  std::uint32_t value = 62000 - sample * 900 - (x + y) % 512;
  if (picture) value = (x * 523 + y * 311 * (sample + 1)) % 40000 / 2 + 9000 + sample * 5000;
  if (stroke) value = 8000 + 500 * sample;
  return value + random.below(700);
}

Raster form(ColourModel model, std::uint16_t bits, std::uint16_t samples,
            ExtraSample extra = ExtraSample::None) {
  Raster raster;
  raster.model = model;
  raster.bitsPerSample = bits;
  raster.samplesPerPixel = samples;
  raster.extraSample = extra;
  if (model == ColourModel::Palette) {
    raster.palette.resize(std::size_t{3} << bits);
    Random random(bits);
    for (auto& entry : raster.palette) entry = static_cast<std::uint16_t>(random.next());
  }
  return raster;
}

}  // namespace

Raster scannedPage(Random& random, const Raster& form, std::uint32_t width, std::uint32_t height) {
  Raster page = form;
  page.width = width;
  page.height = height;
  page.pixels.assign(page.rowBytes() * height, 0);
  std::size_t sample = 0;
  for (std::uint32_t y = 0; y < height; ++y, sample = 0) {
    for (std::uint32_t x = 0; x < width; ++x) {
      for (std::uint32_t s = 0; s < page.samplesPerPixel; ++s) {
        store(page, y, sample++, scannedSample(random, x, y, s));
      }
    }
  }
  return page;
}

std::vector<Raster> allForms() {
  std::vector<Raster> forms;
  for (const std::uint16_t bits : std::initializer_list<std::uint16_t>{1, 2, 4, 8, 16}) {
    forms.push_back(form(ColourModel::MinIsBlack, bits, 1));
    forms.push_back(form(ColourModel::MinIsWhite, bits, 1));
    if (bits <= 8) forms.push_back(form(ColourModel::Palette, bits, 1));
    if (bits < 8) continue;
    forms.push_back(form(ColourModel::MinIsBlack, bits, 2, ExtraSample::UnassociatedAlpha));
    forms.push_back(form(ColourModel::Rgb, bits, 3));
    forms.push_back(form(ColourModel::Rgb, bits, 4, ExtraSample::AssociatedAlpha));
    forms.push_back(form(ColourModel::Cmyk, bits, 4));
    forms.push_back(form(ColourModel::Cmyk, bits, 5, ExtraSample::Unspecified));
  }
  return forms;
}

void writePnm(const std::filesystem::path& file, const Raster& raster) {
  const char* kind = raster.samplesPerPixel == 3 ? "P6" : "P5";
  writeBytes(file, std::string(kind) + " " + std::to_string(raster.width) + " " +
                       std::to_string(raster.height) + " 255\n" +
                       std::string(raster.pixels.begin(), raster.pixels.end()));
}

}  // namespace orvane::test
