#pragma once

#include <cstdint>

#include "imaging/raster/Raster.h"

namespace orvane {

/// Sharpens a gray or colour page by an unsharp mask: each sample moves away from the mean of the
/// square window around it by `strength` (0 to 1) times the difference. The window reaches
/// `halfWidth` pixels (at least 1) to each side. A 16-bit page becomes 8-bit.
///
/// From a 1-bit page it removes black specks of a single pixel instead, except where they are as
/// close as the dots of a dithered picture.
///
/// Throws Failure for a value out of range and for a page that is too large to work on.
Raster finishingFilter(Raster raster, float strength, std::int16_t halfWidth);

}  // namespace orvane
