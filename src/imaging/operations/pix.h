#pragma once

#include <cstdint>
#include <leptonica/allheaders.h>
#include <memory>

#include "imaging/raster/Raster.h"

/// Pages as Leptonica takes them.
namespace orvane {

/// Throws Failure, with the size in its text, when a raster of that size would need more than
/// `kMaxPageBytes` or has a side of more than 4,194,304 pixels. Called before any memory is taken.
void requireRoom(double width, double height, int bitsPerPixel);

/// The form of a page for arithmetic on its pixels: 1-bit MinIsWhite for a 1-bit page, 8-bit gray
/// MinIsBlack or 8-bit RGB for every other one. Throws Failure when that form is too large.
Raster toWorkingForm(Raster raster);

struct PixDeleter {
  void operator()(PIX* pix) const { pixDestroy(&pix); }
};

/// A Leptonica image that destroys itself.
using PixHandle = std::unique_ptr<PIX, PixDeleter>;

/// Takes the result of a Leptonica call; throws Failure with the call's name when there is none.
PixHandle checkedPix(PIX* pix, const char* call);

/// A page in working form as a Leptonica image of 1, 8 or 32 bits. As in a MinIsWhite raster, 1 is
/// ink.
PixHandle toPix(const Raster& page);

/// The raster of a Leptonica image of 1, 8 or 32 bits without a colour map.
Raster toRaster(const PixHandle& pix);

}  // namespace orvane
