#include "imaging/page/tiff_resolution.h"

#include <cstdint>
#include <optional>

namespace orvane {
namespace {

constexpr double kCentimetresPerInch = 2.54;
constexpr double kLowestDpi = 10;
constexpr double kHighestDpi = 20000;

std::optional<double> dotsPerInch(TIFF* tiff, ttag_t tag, std::uint16_t unit) {
  float value = 0;
  if (TIFFGetField(tiff, tag, &value) != 1) return std::nullopt;
  const double dpi = unit == RESUNIT_CENTIMETER ? value * kCentimetresPerInch : value;
  if (!(dpi >= kLowestDpi && dpi <= kHighestDpi)) return std::nullopt;  // a NaN as well
  return dpi;
}

}  // namespace

Resolution tiffResolution(TIFF* tiff) {
  std::uint16_t unit = RESUNIT_INCH;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return {};
  const std::optional<double> x = dotsPerInch(tiff, TIFFTAG_XRESOLUTION, unit);
  const std::optional<double> y = dotsPerInch(tiff, TIFFTAG_YRESOLUTION, unit);
  if (!x && !y) return {};
  return {x ? *x : *y, y ? *y : *x, true};
}

}  // namespace orvane
