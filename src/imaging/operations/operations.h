#pragma once

#include <cstdint>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// Changes of a loaded page. A 1-bit page stays 1-bit; a 16-bit colour page is worked on in 8 bits
/// where an operation needs arithmetic on its pixels (all but `crop`). Angles are those of the page
/// on paper: a page whose resolution differs between x and y is turned in its true proportions.
namespace orvane {

/// What lies of a raster inside a rectangle, in pixels. Exact at every depth. Throws Failure when
/// the rectangle holds no pixel of the page.
Raster crop(const Raster& raster, std::int32_t left, std::int32_t top, std::int32_t width,
            std::int32_t height);

/// Turns a raster by `degrees`, to the left when positive. Multiples of 90 are exact; any other
/// angle enlarges the page to hold all of it, with paper-coloured corners.
Raster rotate(Raster raster, double degrees, const Resolution& resolution = {});

/// The resolution of a page after `rotate`: x and y change places with an odd number of quarter
/// turns and stay with any other angle.
Resolution rotated(const Resolution& resolution, double degrees);

/// The skew of a page in degrees: the angle by which `straighten` has to turn it (to the left when
/// positive); 0 when no skew can be measured, as on a page with a signature, a stamp or a few
/// words.
double measureSkew(const Raster& raster, const Resolution& resolution = {});

/// Turns a page by a small angle about its centre, to the left when positive, its size unchanged,
/// the corners paper-coloured. An angle of 0 changes nothing, bit for bit.
Raster straighten(Raster raster, double degrees, const Resolution& resolution = {});

/// An unsharp mask for gray and colour (strength 0 to 1, half-width in pixels, at least 1); for
/// 1-bit pages the removal of single-pixel specks, but not of those that lie together as the dots
/// of a dithered picture do.
Raster finish(Raster raster, float strength, std::int16_t halfWidth);

/// Scales a page to a size in pixels: area mapping down, interpolation up; a 1-bit page becomes
/// gray when it shrinks. Throws Failure for a width or height below 1.
Raster resize(Raster raster, std::int32_t width, std::int32_t height);

}  // namespace orvane
