#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/operations/operations.h"
#include "imaging/operations/turn.h"
#include "imaging/operations/working_form.h"
#include "imaging/page/orientation.h"

namespace orvane {
namespace {

bool isQuarterTurns(double degrees) {
  return std::fmod(degrees, 90.0) == 0.0;
}

// The smallest sheet that holds a page of this size after the turn.
void sheetSize(const Raster& page, double degrees, double rowsPerColumn, double& width,
               double& height) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::abs(std::cos(angle));
  const double sine = std::abs(std::sin(angle));
  constexpr double kRoundingError = 1e-6;
  const double across = page.height * sine / rowsPerColumn;
  const double down = page.width * sine * rowsPerColumn;
  width = std::ceil(page.width * cosine + across - kRoundingError);
  height = std::ceil(down + page.height * cosine - kRoundingError);
}

void requireAngle(double degrees) {
  if (!std::isfinite(degrees)) throw Failure("the angle to turn a page by is not a number");
}

}  // namespace

Raster rotate(Raster raster, double degrees, const Resolution& resolution) {
  requireAngle(degrees);
  const double turn = std::fmod(degrees, 360.0);
  if (isQuarterTurns(turn)) {
    return rotateQuarters(std::move(raster), static_cast<int>(turn / 90.0));
  }

  const Raster page = toWorkingForm(std::move(raster));
  double width = 0.0;
  double height = 0.0;
  sheetSize(page, turn, rowsPerColumn(resolution), width, height);
  requireRoom(width, height, page.bitsPerPixel());
  return turnOnSheet(page, turn, rowsPerColumn(resolution), static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(height));
}

Resolution rotated(const Resolution& resolution, double degrees) {
  Resolution turned = resolution;
  const bool isOnItsSide = isQuarterTurns(degrees) && std::fmod(degrees, 180.0) != 0.0;
  if (isOnItsSide) std::swap(turned.x, turned.y);
  return turned;
}

Raster straighten(Raster raster, double degrees, const Resolution& resolution) {
  requireAngle(degrees);
  if (degrees == 0.0) return raster;
  const Raster page = toWorkingForm(std::move(raster));
  return turnOnSheet(page, degrees, rowsPerColumn(resolution), page.width, page.height);
}

}  // namespace orvane
