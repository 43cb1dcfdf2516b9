#pragma once

#include <optional>

#include "imaging/jpeg/JpegFactors.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/StoredJpeg.h"

namespace orvane {

/// Makes a JPEG save of a page that is JPEG already without decoding its pixels. Each quantisation
/// step becomes the larger of the source's and of the one that `encodeJpeg` would take, so that the
/// page loses no more than it must. Where that changes no step the data is verified to its end and
/// copied; else its coefficients are rounded to the coarser steps. Several strips become one
/// stream.
///
/// Answers nothing for a page that has to go through its pixels: not baseline, not YCbCr or gray
/// (as JFIF defines them), unusual sampling, not upright in strips, strips that end within an MCU
/// or are not whole. Throws Failure when the data is damaged: a bad code, missing or surplus data.
std::optional<EncodedImage> transcodeJpeg(const StoredJpeg& page, JpegFactors factors);

/// Examines every stream of a page as `transcodeJpeg` does, for a page whose pixels are decoded by
/// libjpeg, which accepts some damage in silence. Streams that only a decoder can examine are
/// passed over: not baseline, unusual sampling, not whole. Throws Failure when the data is damaged.
void verifyJpeg(const StoredJpeg& page);

}  // namespace orvane
