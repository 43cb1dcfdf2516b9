#pragma once

#include "imaging/tiff/TiffHandle.h"
#include "imaging/tiff/TiffLayout.h"

namespace orvane {

/// Sets libtiff to decode the current directory, which has this layout. Throws Failure with
/// libtiff's reason when it does not support the page, and for a JBIG stream of another size.
void prepareDecoder(TiffHandle& tiff, const TiffLayout& layout);

/// Decodes the current directory, upright, after `prepareDecoder`. Damage is reported in the
/// result; a page of which nothing can be decoded throws Failure. See TiffPage::decode.
Examined<Raster> decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows);

}  // namespace orvane
