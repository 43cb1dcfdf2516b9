#pragma once

#include <functional>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// Encodings that keep every sample value, palettes and alpha included.

namespace orvane {

/// LZW strips (TIFF 6.0 section 13), with the horizontal predictor (section 14) for 8-bit samples
/// of non-palette rasters. `pause` is called before every second strip: a colour page
/// takes a tenth of a second.
EncodedImage encodeLzw(
    const Raster& raster, SampleOrder order, const std::function<void()>& pause = [] {});

/// Plain strips.
EncodedImage encodeUncompressed(const Raster& raster, SampleOrder order);

/// One plain strip: the pixels of a raster of at most 8 bits a sample, without a copy of them.
EncodedImage inOnePlainStrip(Raster&& raster);

}  // namespace orvane
