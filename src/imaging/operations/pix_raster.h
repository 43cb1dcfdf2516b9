#pragma once

#include <leptonica/allheaders.h>
#include <memory>

#include "imaging/page/Raster.h"

namespace orvane {

struct PixDeleter {
  void operator()(PIX* pix) const { pixDestroy(&pix); }
};

/// A Leptonica image that destroys itself.
using PixHandle = std::unique_ptr<PIX, PixDeleter>;

/// The owner of what a Leptonica call has answered; throws Failure with the call's name when it
/// answered nothing.
PixHandle checkedPix(PIX* pix, const char* call);

/// A page in working form (see working_form.h) as a Leptonica image of 1, 8 or 32 bits. Leptonica's
/// 1 is ink, as in a MinIsWhite raster.
PixHandle toPix(const Raster& page);

/// The raster of a Leptonica image of 1 bit, or of 8 bits without a colour map.
Raster toRaster(const PixHandle& pix);

}  // namespace orvane
