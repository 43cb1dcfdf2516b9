#include "imaging/page/conversion.h"

#include <algorithm>
#include <array>
#include <utility>

#include "imaging/page/pixel_colours.h"
#include "imaging/page/row_to_bytes.h"
#include "imaging/page/samples.h"

namespace orvane {
namespace {

bool isGray(const Raster& raster) {
  return raster.model == ColourModel::MinIsWhite || raster.model == ColourModel::MinIsBlack;
}

bool hasOnlyColourSamples(const Raster& raster) {
  return raster.extraSample == ExtraSample::None;
}

// The brighter entry is paper, also when both are dark or both are light.
bool secondEntryIsPaper(const Raster& raster) {
  return paletteBrightness(raster, 1) > paletteBrightness(raster, 0);
}

void invert(Raster& raster) {
  for (std::uint8_t& byte : raster.pixels) byte = static_cast<std::uint8_t>(~byte);
  clearPadding(raster);
}

Raster cutAtHalf(const Raster& raster) {
  Raster form;  // 1-bit MinIsWhite
  Raster bilevel = emptyRaster(form, raster.width, raster.height);
  const std::size_t step = raster.samplesPerPixel;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    const std::uint8_t* from = raster.row(y);
    std::uint8_t* to = bilevel.row(y);
    for (std::uint32_t x = 0; x < raster.width; ++x, from += step) {
      const std::uint32_t level = step == 1 ? from[0] : brightness(from[0], from[1], from[2]);
      if (level < 128) to[x / 8] = static_cast<std::uint8_t>(to[x / 8] | 0x80U >> x % 8);
    }
  }
  return bilevel;
}

}  // namespace

Raster toBilevel(Raster raster) {
  if (raster.bitsPerPixel() > 1) return cutAtHalf(toGrayOrRgb8(std::move(raster)));
  if (raster.model == ColourModel::MinIsBlack ||
      (raster.model == ColourModel::Palette && secondEntryIsPaper(raster))) {
    invert(raster);
  }
  raster.model = ColourModel::MinIsWhite;
  raster.palette.clear();
  return raster;
}

Raster toGrayOrRgb8(Raster raster) {
  const bool plain = raster.bitsPerSample == 8 && hasOnlyColourSamples(raster);
  if (plain && (raster.model == ColourModel::MinIsBlack || raster.model == ColourModel::Rgb)) {
    return raster;
  }
  if (plain && raster.model == ColourModel::MinIsWhite) {
    invert(raster);
    raster.model = ColourModel::MinIsBlack;
    return raster;
  }
  const PixelColours colours(raster);
  Raster form;
  form.bitsPerSample = 8;
  form.samplesPerPixel = colours.samples();
  form.model = colours.samples() == 1 ? ColourModel::MinIsBlack : ColourModel::Rgb;
  requirePageMemory(raster.pixels.size() +
                    std::uint64_t{raster.width} * raster.height * colours.samples());
  Raster result = emptyRaster(form, raster.width, raster.height);
  const RowToBytes rowToBytes(raster);
  Bytes samples(std::size_t{raster.width} * raster.samplesPerPixel);
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    rowToBytes.spread(raster.row(y), samples.data());
    colours.convert(samples, result.row(y));
  }
  return result;
}

Raster toPdfForm(Raster raster) {
  const bool depthFits = raster.bitsPerSample <= 8;
  const bool modelFits = isGray(raster) || raster.model == ColourModel::Palette ||
                         (raster.model == ColourModel::Rgb && raster.bitsPerSample == 8);
  if (depthFits && modelFits && hasOnlyColourSamples(raster)) return raster;
  return toGrayOrRgb8(std::move(raster));
}

}  // namespace orvane
