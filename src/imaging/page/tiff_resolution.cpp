#include "imaging/page/tiff_resolution.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace orvane {
namespace {

constexpr double kCentimetresPerInch = 2.54;
constexpr double kLowestDpi = 10;
constexpr double kHighestDpi = 20000;

double valueOf(TIFF* tiff, ttag_t tag) {
  float value = 0;
  return TIFFGetField(tiff, tag, &value) == 1 ? value : 0;
}

std::optional<double> credible(double dpi) {
  if (!(dpi >= kLowestDpi && dpi <= kHighestDpi)) return std::nullopt;  // a NaN as well
  return dpi;
}

// Without a unit the values tell only the shape of a pixel.
Resolution ofPixelShape(double x, double y) {
  const Resolution unstated;
  const double scale = unstated.x / std::max(x, y);
  if (x == y || !credible(scale * x) || !credible(scale * y)) return unstated;
  return {scale * x, scale * y, true};
}

}  // namespace

Resolution tiffResolution(TIFF* tiff) {
  std::uint16_t unit = RESUNIT_INCH;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  const double x = valueOf(tiff, TIFFTAG_XRESOLUTION);
  const double y = valueOf(tiff, TIFFTAG_YRESOLUTION);
  if (unit == RESUNIT_NONE) return ofPixelShape(x, y);
  if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return {};
  const double unitsPerInch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
  const std::optional<double> dpiX = credible(x * unitsPerInch);
  const std::optional<double> dpiY = credible(y * unitsPerInch);
  if (!dpiX && !dpiY) return {};
  return {dpiX ? *dpiX : *dpiY, dpiY ? *dpiY : *dpiX, true};
}

}  // namespace orvane
