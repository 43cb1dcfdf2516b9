#include "imaging/codecs/encoded_form.h"

#include <string>

#include "foundation/Failure.h"

namespace orvane {
namespace {

Photometric photometricOf(ColourModel model) {
  switch (model) {
    case ColourModel::MinIsWhite:
      return Photometric::MinIsWhite;
    case ColourModel::MinIsBlack:
      return Photometric::MinIsBlack;
    case ColourModel::Palette:
      return Photometric::Palette;
    case ColourModel::Rgb:
      return Photometric::Rgb;
    case ColourModel::Cmyk:
      return Photometric::Cmyk;
  }
  throw Failure("unknown colour model");
}

unsigned colourSamples(ColourModel model) {
  if (model == ColourModel::Rgb) return 3;
  return model == ColourModel::Cmyk ? 4 : 1;
}

std::optional<std::uint16_t> extraSampleOf(ExtraSample extra) {
  switch (extra) {
    case ExtraSample::None:
      return std::nullopt;
    case ExtraSample::Unspecified:
      return std::uint16_t{0};
    case ExtraSample::AssociatedAlpha:
      return std::uint16_t{1};
    case ExtraSample::UnassociatedAlpha:
      return std::uint16_t{2};
  }
  throw Failure("unknown extra sample");
}

void check(const Raster& raster) {
  const auto refuse = [](const std::string& why) { throw Failure("cannot encode raster: " + why); };
  if (raster.width == 0 || raster.height == 0) refuse("it has no pixels");
  const unsigned extra = raster.extraSample == ExtraSample::None ? 0 : 1;
  if (raster.samplesPerPixel != colourSamples(raster.model) + extra) {
    refuse(std::to_string(raster.samplesPerPixel) + " samples do not fit its colour model");
  }
  if (raster.pixels.size() / raster.rowBytes() < raster.height) refuse("rows are missing");
  if (raster.model == ColourModel::Palette &&
      raster.palette.size() != std::size_t{3} << raster.bitsPerSample) {
    refuse("its palette has " + std::to_string(raster.palette.size()) + " entries");
  }
}

}  // namespace

EncodedImage encodedFormOf(const Raster& raster) {
  check(raster);
  EncodedImage image;
  image.width = raster.width;
  image.height = raster.height;
  image.bitsPerSample = raster.bitsPerSample;
  image.samplesPerPixel = raster.samplesPerPixel;
  image.photometric = photometricOf(raster.model);
  image.extraSample = extraSampleOf(raster.extraSample);
  if (raster.model == ColourModel::Palette) image.palette = raster.palette;
  return image;
}

}  // namespace orvane
