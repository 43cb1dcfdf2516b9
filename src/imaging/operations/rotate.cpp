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

// The smallest sheet that holds a page of this size after the turn.
void sheetSize(const Raster& page, double degrees, double& width, double& height) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::abs(std::cos(angle));
  const double sine = std::abs(std::sin(angle));
  constexpr double kRoundingError = 1e-6;
  width = std::ceil(page.width * cosine + page.height * sine - kRoundingError);
  height = std::ceil(page.width * sine + page.height * cosine - kRoundingError);
}

void requireAngle(double degrees) {
  if (!std::isfinite(degrees)) throw Failure("the angle to turn a page by is not a number");
}

}  // namespace

Raster rotate(Raster raster, double degrees) {
  requireAngle(degrees);
  const double turn = std::fmod(degrees, 360.0);
  if (std::fmod(turn, 90.0) == 0.0) {
    return rotateQuarters(std::move(raster), static_cast<int>(turn / 90.0));
  }

  const Raster page = toWorkingForm(std::move(raster));
  double width = 0.0;
  double height = 0.0;
  sheetSize(page, turn, width, height);
  requireRoom(width, height, page.bitsPerPixel());
  return turnOnSheet(page, turn, static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(height));
}

Raster straighten(Raster raster, double degrees) {
  requireAngle(degrees);
  if (degrees == 0.0) return raster;
  const Raster page = toWorkingForm(std::move(raster));
  return turnOnSheet(page, degrees, page.width, page.height);
}

}  // namespace orvane
