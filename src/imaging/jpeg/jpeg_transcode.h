#pragma once

#include <optional>

#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// Makes a JPEG save of a page that is JPEG already without decoding its pixels. Each quantisation
/// step becomes the larger of the source's and of the one that `encodeJpeg` would take, so that the
/// page loses no more than it must. Where that changes no step the data is verified to its end and
/// copied; else its coefficients are rounded to the coarser steps. Several strips become one
/// stream.
///
/// The strips of `source` are complete streams. Answers nothing for a page that has to go through
/// its pixels: not baseline, not YCbCr or gray (as JFIF defines them), unusual sampling, strips
/// that end within an MCU. Throws Failure when the data is damaged: a bad code, missing or surplus
/// data.
std::optional<EncodedImage> transcodeJpeg(const EncodedImage& source, JpegFactors factors);

}  // namespace orvane
