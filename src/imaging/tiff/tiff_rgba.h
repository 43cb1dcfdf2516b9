#pragma once

#include "imaging/raster/Raster.h"
#include "imaging/tiff/TiffBlockReader.h"
#include "imaging/tiff/TiffHandle.h"
#include "imaging/tiff/TiffLayout.h"

/// Pages whose samples are not RGB and which libtiff's RGBA reader turns into RGB: YCbCr that is
/// not plain JPEG, and colour in old-style JPEG.

namespace orvane {

/// Throws Failure with libtiff's reason when its RGBA reader does not support the page.
void requireRgbaReader(TiffHandle& tiff);

/// Decodes the page to `raster`, which is 8-bit RGB and has the size of the stored page. A strip or
/// tile that cannot be decoded is added to `missing`.
BlockTally decodeThroughRgba(TiffHandle& tiff, const TiffLayout& layout, Raster& raster,
                             std::vector<PageArea>& missing);

}  // namespace orvane
