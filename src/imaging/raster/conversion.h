#pragma once

#include "imaging/raster/Raster.h"

/// Rasters in the plainer forms that codecs and containers ask for. Every conversion takes its
/// argument by value: a raster that already has the form passes through untouched.

namespace orvane {

/// 1-bit MinIsWhite. A 1-bit palette becomes black and white by the brightness of its entries;
/// a deeper raster is cut at half brightness.
Raster toBilevel(Raster raster);

/// 8-bit gray MinIsBlack or 8-bit RGB, without alpha: palettes are looked up, CMYK is turned to
/// RGB, 16-bit samples keep their high byte, shallow gray is spread to 0..255, alpha is blended
/// over white. A palette of grays only becomes gray.
Raster toGrayOrRgb8(Raster raster);

/// The form that PDF/A-1b can hold as it is (ISO 32000-1 clause 8.9.5): 1, 2, 4 or 8-bit gray,
/// palette, or 8-bit RGB. Everything else goes the way of `toGrayOrRgb8`.
Raster toPdfForm(Raster raster);

}  // namespace orvane
