#pragma once

#include "imaging/page/TiffLayout.h"
#include "imaging/page/tiff_blocks.h"

/// libtiff's own conversion of a page to 8-bit RGB (its RGBA reader), for colours whose samples are
/// not RGB: YCbCr that is not plain JPEG, colour in old-style JPEG, CIELab and ICCLab.
namespace orvane {

/// Throws Failure with libtiff's reason when its RGBA reader does not know such a page.
void requireRgbaReader(const TiffHandle& tiff, const TiffLayout& layout);

/// Decodes the current directory to `raster`, which is 8-bit RGB, holds paper and is as large as
/// the page as stored. A strip or tile that cannot be decoded whole stays paper.
BlockTally decodeThroughRgba(const TiffHandle& tiff, const TiffLayout& layout, Raster& raster);

}  // namespace orvane
