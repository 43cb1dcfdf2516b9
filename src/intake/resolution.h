#pragma once

#include "imaging/raster/EncodedImage.h"

namespace orvane {

constexpr double kCentimetresPerInch = 2.54;

/// A resolution of two numbers of dots per unit, of which `unitsPerInch` make an inch. What no
/// scanner has counts as not stated. Files round metres and points, so what is nearly a whole
/// number of dots per inch (0.05 %) is that number.
Resolution statedResolution(double x, double y, double unitsPerInch);

}  // namespace orvane
