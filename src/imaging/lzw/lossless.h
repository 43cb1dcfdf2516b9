#pragma once

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// Encodings that keep every sample value, palettes and alpha included.

namespace orvane {

/// LZW strips (TIFF 6.0 section 13), with the horizontal predictor (section 14) for 8 and 16-bit
/// samples of non-palette rasters.
EncodedImage encodeLzw(const Raster& raster, SampleOrder order);

/// Plain strips.
EncodedImage encodeUncompressed(const Raster& raster, SampleOrder order);

}  // namespace orvane
