#pragma once

#include "imaging/page/TiffLayout.h"
#include "imaging/page/TiffPage.h"
#include "imaging/page/tiff_blocks.h"

namespace orvane {

/// Decodes the current directory, upright. Damage is reported in the result; a page of which
/// nothing can be decoded throws Failure. See TiffPage::decode.
DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows);

/// Fills `raster`, which holds paper and is as large as the page as stored, with the samples that
/// are kept.
BlockTally decodeSamples(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                         Raster& raster);

}  // namespace orvane
