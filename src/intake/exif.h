#pragma once

#include <cstdint>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// What the Exif data of a picture says of how it is to be shown (JEITA CP-3451 section 4.6.4).
struct ExifNotes {
  std::uint16_t orientation = 1;  ///< 1 to 8, as in TIFF 6.0
  Resolution resolution;
};

/// Reads the Exif data of an APP1 segment, which begins with "Exif" and two zeros. What is damaged
/// in it counts as not stated.
ExifNotes readExif(ByteView segment);

}  // namespace orvane
