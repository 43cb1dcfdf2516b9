#pragma once

#include <cstdint>

#include "imaging/codecs/lossless.h"
#include "imaging/page/Raster.h"

namespace orvane {

/// True for forms whose samples are quantities of whole bytes, so that differences of neighbours
/// are small: all 8 and 16-bit ones but palettes.
bool suitsHorizontalPredictor(const Raster& raster);

/// Puts `rows` rows from `top` on into `out` as a TIFF file holds them: 16-bit samples in `order`.
/// `out` has room for them.
void copyRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
              std::uint8_t* out);

/// As `copyRows`, each sample being its difference from the same sample of the pixel to its left
/// (TIFF 6.0 section 14). For forms that suit it.
void differenceRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
                    std::uint8_t* out);

}  // namespace orvane
