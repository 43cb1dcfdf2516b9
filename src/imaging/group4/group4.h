#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

/// Group 4 compression of 1-bit pages (ITU-T T.6; TIFF 6.0 section 11, compression 4).

namespace orvane {

/// How a copy keeps the rows: in the strips that they have, or joined to one stream for a container
/// that holds one stream an image.
enum class Group4Output { Strips, OneStream };

/// A Group 4 image after a walk over all of its codes.
struct Group4Copy {
  /// The image, each strip whole and ending in one end-of-block. Nothing when it is damaged, or
  /// when some rows are coded in a way that T.6 does not know and that readers take differently:
  /// such an image has to be decoded and encoded again.
  std::optional<EncodedImage> image;
  /// Why the image is damaged: a bad code, a row that does not add up to the width, a strip that is
  /// cut, code data left over after the last row, rows missing between others.
  std::optional<std::string> damage;
  /// Without damage: the rows of each strip that are coded. The page may end before its last row,
  /// in an end-of-block; in `image` paper stands for the other rows.
  StripRows codedRows;
};

/// Walks the strips of a Group 4 image without drawing a pixel, and copies them. Rows keep their
/// codes; only the first row of a strip that is joined to the one before it is coded again. What
/// comes after the last row is padding when it is zero bits, with or without end-of-line codes, and
/// whatever it is after an end-of-block; it is not copied.
Group4Copy copyGroup4(EncodedImage image, Group4Output output);

/// Encodes a 1-bit raster (MinIsWhite or MinIsBlack) as one strip that ends in an end-of-block. The
/// bits keep their values and the photometric goes along. Throws Failure for any other raster.
EncodedImage encodeGroup4(const Raster& raster);

}  // namespace orvane
