#pragma once

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// The skew of a page in degrees: the angle by which `straighten` has to turn it, positive to the
/// left. 0 for a skew below 0.03 degrees, and when none can be measured, as on a page that shows a
/// signature, a stamp or a few words. Measures up to 7 degrees. Throws Failure when the page is too
/// large to work on.
double measureSkew(const Raster& raster, const Resolution& resolution = {});

/// The skew of a page as `measureSkew` returns it if it is more than `degrees`, otherwise 0. Much
/// quicker for most pages: the page is measured only if a picture of it, 2 to 16 times smaller, has
/// at least 0.6 times that skew, or if none can be measured in the picture. Throws Failure as
/// `measureSkew` does.
double skewBeyond(double degrees, const Raster& raster, const Resolution& resolution = {});

}  // namespace orvane
