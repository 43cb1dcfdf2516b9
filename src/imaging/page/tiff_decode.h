#pragma once

#include "imaging/page/TiffLayout.h"
#include "imaging/page/TiffPage.h"

namespace orvane {

/// Decodes the current directory, upright. Damage is reported in the result. See TiffPage::decode.
DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows);

/// The two ways of decoding, by `TiffLayout::throughRgbaReader`. Each fills `raster`, which holds
/// paper and is as large as the page as stored, and answers whether every strip or tile was whole.
bool decodeSamples(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                   Raster& raster);
bool decodeThroughRgba(TiffHandle& tiff, const TiffLayout& layout, Raster& raster);

}  // namespace orvane
