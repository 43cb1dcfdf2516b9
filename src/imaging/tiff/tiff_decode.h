#pragma once

#include "imaging/tiff/TiffLayout.h"
#include "imaging/tiff/TiffPage.h"

namespace orvane {

/// Decodes the current directory, upright. Damage is reported in the result; a page of which
/// nothing can be decoded throws Failure. See TiffPage::decode.
Examined<Raster> decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows);

/// Some colours are decoded by libtiff's RGBA reader, because their samples are not RGB: YCbCr that
/// is not plain JPEG, colour in old-style JPEG, CIELab and ICCLab. Throws Failure with libtiff's
/// reason when that reader does not support the page.
void requireRgbaReader(const TiffHandle& tiff, const TiffLayout& layout);

}  // namespace orvane
