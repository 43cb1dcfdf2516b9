#pragma once

#include <tiffio.h>

#include "imaging/page/Resolution.h"

namespace orvane {

/// The resolution of the current directory (TIFF 6.0 XResolution, YResolution, ResolutionUnit) in
/// dots per inch. No unit, no value or one that no scanner has counts as not stated; a value for
/// one direction alone counts for both.
Resolution tiffResolution(TIFF* tiff);

}  // namespace orvane
