#include "imaging/operations/working_form.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/page/conversion.h"

namespace orvane {

void requireRoom(double width, double height, int bitsPerPixel) {
  constexpr double kMaxBytes = 1024.0 * 1024.0 * 1024.0;
  constexpr double kMaxSide = 4.0 * 1024.0 * 1024.0;
  if (std::max(width, height) <= kMaxSide && width * height * bitsPerPixel / 8 <= kMaxBytes) return;
  throw Failure("an image of " + std::to_string(std::llround(width)) + " x " +
                std::to_string(std::llround(height)) +
                " pixels is too large to work on (at most 1 GiB, at most 4194304 pixels a side)");
}

Raster toWorkingForm(Raster raster) {
  if (raster.bitsPerPixel() == 1) return toBilevel(std::move(raster));
  const bool gray =
      raster.model == ColourModel::MinIsWhite || raster.model == ColourModel::MinIsBlack;
  requireRoom(raster.width, raster.height, gray ? 8 : 24);
  return toGrayOrRgb8(std::move(raster));
}

}  // namespace orvane
