#include "imaging/containers/image_checks.h"

#include <algorithm>

#include "imaging/containers/OutputFile.h"

namespace orvane {
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

}  // namespace orvane
