#pragma once

#include <tiffio.h>

#include "imaging/page/Resolution.h"

namespace orvane {

/// The resolution of the current directory (TIFF 6.0 XResolution, YResolution, ResolutionUnit) in
/// dots per inch. No value or one that no scanner has counts as not stated; a value for one
/// direction alone counts for both. Two unequal values without a unit are in the ratio of the
/// resolution, whose finer direction then counts as 200; equal ones state nothing.
Resolution tiffResolution(TIFF* tiff);

}  // namespace orvane
