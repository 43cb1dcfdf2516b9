#pragma once

#include "imaging/page/EncodedImage.h"
#include "imaging/page/Raster.h"

namespace orvane {

/// What an encoded image says of the raster it was made of: size, depth, photometric, palette and
/// extra sample; no strips yet. Throws Failure for a raster that is empty or contradicts itself.
EncodedImage encodedFormOf(const Raster& raster);

}  // namespace orvane
