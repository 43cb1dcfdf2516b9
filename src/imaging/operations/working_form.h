#pragma once

#include <cstdint>

#include "imaging/page/Raster.h"

namespace orvane {

/// Throws Failure, with the size in its text, when a raster of that size would need more than 1 GiB
/// or has a side of more than 4,194,304 pixels. Asked before any memory is taken.
void requireRoom(double width, double height, int bitsPerPixel);

/// The plain form in which pixels are computed with: 1-bit MinIsWhite for a 1-bit page, 8-bit gray
/// MinIsBlack or 8-bit RGB for every other one. Throws Failure when that form is too large.
Raster toWorkingForm(Raster raster);

}  // namespace orvane
