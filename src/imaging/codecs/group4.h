#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "imaging/page/Bytes.h"
#include "imaging/page/EncodedImage.h"
#include "imaging/page/Raster.h"

/// Group 4 compression of 1-bit pages (ITU-T T.6; TIFF 6.0 section 11, compression 4).
namespace orvane {

/// Walks the strips of a Group 4 image without drawing a pixel. Answers what is wrong with them:
/// a bad code, a row that does not add up to the width, missing rows, or data left over behind the
/// last row that is not the end-of-block. Nothing when every row is there and whole.
std::optional<std::string> findGroup4Damage(const EncodedImage& image);

/// Encodes a 1-bit raster (MinIsWhite or MinIsBlack) as one strip that ends in an end-of-block. The
/// bits keep their values and the photometric goes along.
EncodedImage encodeGroup4(const Raster& raster);

/// Joins the strips of a verified Group 4 image into one strip, from changing element to changing
/// element, for containers that hold one stream an image. A single strip passes through. Throws
/// Failure when the strips are damaged.
EncodedImage joinGroup4Strips(EncodedImage image);

}  // namespace orvane
