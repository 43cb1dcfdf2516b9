#pragma once

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// Rotation. Angles are in degrees, positive to the left, and those of the page on paper: a page
/// whose resolution differs between x and y is turned in its true proportions. A 1-bit page stays
/// 1-bit; a 16-bit page becomes 8-bit, except by a multiple of 90 degrees. Every function throws
/// Failure for an angle that is no number and for a page that is too large to work on.
namespace orvane {

/// Turns a page. Multiples of 90 degrees are exact; any other angle enlarges the page to hold all
/// of it, with paper-coloured corners.
Raster rotate(Raster raster, double degrees, const Resolution& resolution = {});

/// The resolution of a page after `rotate`: x and y are exchanged after an odd number of quarter
/// turns and stay with any other angle.
Resolution rotated(const Resolution& resolution, double degrees);

/// Turns a page by a small angle about its centre, its size unchanged, the corners paper-coloured.
/// An angle of 0 changes nothing, bit for bit.
Raster straighten(Raster raster, double degrees, const Resolution& resolution = {});

/// The number of rows in the length of one column's width: 1 for square pixels. Scanners stay
/// between 1/4 and 4; anything beyond 1/16 or 16 is brought to that limit.
double rowsPerColumn(const Resolution& resolution);

}  // namespace orvane
