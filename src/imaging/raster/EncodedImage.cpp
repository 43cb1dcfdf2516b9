#include "imaging/raster/EncodedImage.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/OutputFile.h"

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

namespace {

constexpr double kLowestResolution = 1e-3;
constexpr double kHighestResolution = 1e6;

bool isResolution(double dotsPerInch) {
  return dotsPerInch >= kLowestResolution && dotsPerInch <= kHighestResolution;  // false for a NaN
}

bool holdsAllRows(const EncodedImage& image) {
  const std::uint64_t rowBytes = plainRowBytes(image);
  std::uint64_t rows = image.height;
  for (const Bytes& strip : image.strips) {
    const std::uint64_t stripRows = std::min<std::uint64_t>(rows, image.rowsPerStrip);
    if (strip.size() != stripRows * rowBytes) return false;
    rows -= stripRows;
  }
  return true;
}

const char* findMisfit(const EncodedImage& image) {
  if (image.width == 0 || image.height == 0) return "the image has no pixel";
  if (image.rowsPerStrip == 0 || image.samplesPerPixel == 0) return "the image has no form";
  const std::uint64_t strips =
      (std::uint64_t{image.height} + image.rowsPerStrip - 1) / image.rowsPerStrip;
  if (image.strips.size() != strips) return "the image has strips missing";
  if (std::ranges::any_of(image.strips, &Bytes::empty)) return "the image has an empty strip";
  if (image.compression == Compression::None && !holdsAllRows(image)) {
    return "the image has rows missing";
  }
  const bool isPalette = image.photometric == Photometric::Palette;
  if (isPalette &&
      (image.bitsPerSample > 8 || image.palette.size() != std::size_t{3} << image.bitsPerSample)) {
    return "the palette does not fit the image";
  }
  if (!isResolution(image.resolution.x) || !isResolution(image.resolution.y)) {
    return "the resolution is no number of dots per inch";
  }
  return nullptr;
}

}  // namespace

std::uint64_t plainRowBytes(const EncodedImage& image) {
  return (std::uint64_t{image.width} * image.bitsPerSample * image.samplesPerPixel + 7) / 8;
}

void requireWholeImage(const std::wstring& path, const EncodedImage& image) {
  if (const char* misfit = findMisfit(image)) throw fileFailure(path, misfit);
}

void requireDeletablePage(const std::wstring& path, std::int32_t page, std::uint64_t pageCount) {
  if (page < 1 || static_cast<std::uint64_t>(page) > pageCount) {
    throw fileFailure(path, "there is no page " + std::to_string(page) + " among its " +
                                std::to_string(pageCount));
  }
  if (pageCount == 1) throw fileFailure(path, "the only page of a file cannot be removed");
}

std::optional<EarlyEnd> earlyEndOf(const StripRows& codedRows, std::uint32_t promisedRows) {
  const std::uint32_t coded = std::accumulate(codedRows.begin(), codedRows.end(), 0U);
  if (codedRows.empty() || coded == promisedRows) return std::nullopt;
  return EarlyEnd{coded, promisedRows};
}

void DataState::add(DataState later) {
  if (later.damage) damage = std::move(later.damage);
  if (later.earlyEnd) earlyEnd = later.earlyEnd;
}

}  // namespace orvane
