#pragma once

#include <array>
#include <cstdint>
#include <leptonica/allheaders.h>
#include <memory>

#include "imaging/raster/Raster.h"

namespace orvane {

/// Throws Failure, with the size in its text, when a raster of that size would need more than 1 GiB
/// or has a side of more than 4,194,304 pixels. Asked before any memory is taken.
void requireRoom(double width, double height, int bitsPerPixel);

/// The plain form in which pixels are computed with: 1-bit MinIsWhite for a 1-bit page, 8-bit gray
/// MinIsBlack or 8-bit RGB for every other one. Throws Failure when that form is too large.
Raster toWorkingForm(Raster raster);

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

/// The tone of the paper, one value a channel (gray: only the first), for an 8-bit gray or RGB
/// page: the brightest tone that is common along the border. White when none is common.
std::array<std::uint8_t, 3> paperTone(const Raster& page);

}  // namespace orvane
