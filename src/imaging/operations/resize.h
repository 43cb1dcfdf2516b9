#pragma once

#include <cstdint>

#include "imaging/raster/Raster.h"

namespace orvane {

/// Scales a page to a size in pixels: area mapping down, linear interpolation up. A 1-bit page
/// becomes gray when it shrinks and stays 1-bit when it grows; a 16-bit page becomes 8-bit. Throws
/// Failure for a width or height below 1 and for a page of more than 1 GiB.
Raster resize(Raster raster, std::int32_t width, std::int32_t height);

}  // namespace orvane
