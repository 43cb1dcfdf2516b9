#pragma once

#include "imaging/page/TiffLayout.h"

namespace orvane {

/// Reads what the sample values of the current directory mean: fills photometric, form and the way
/// of decoding from the size and samples in `layout`. Throws Failure for colours that are not
/// supported.
void readTiffColour(const TiffHandle& tiff, TiffLayout& layout);

}  // namespace orvane
