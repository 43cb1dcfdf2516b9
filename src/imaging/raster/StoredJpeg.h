#pragma once

#include <cstdint>
#include <functional>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// A page that is stored as JPEG streams, one a strip or tile, of 8-bit samples (TIFF Technical
/// Note 2). The tables that its streams share are there once.
struct StoredJpeg {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t rowsPerStrip = 0;
  std::uint16_t samplesPerPixel = 0;
  Photometric photometric = Photometric::MinIsBlack;
  Resolution resolution;
  bool isUprightInStrips = false;  ///< its strips show the page from top to bottom, in one plane

  ByteView tables;  ///< a stream of tables only (ITU-T T.81 B.5), or empty
  std::uint32_t streamCount = 0;
  /// Stream `index`, which may lack the shared tables; empty when the file does not hold it whole.
  /// The bytes live until the next call.
  std::function<ByteView(std::uint32_t index)> stream;
};

}  // namespace orvane
