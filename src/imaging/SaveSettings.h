#pragma once

#include <cstdint>
#include <optional>

#include "imaging/ImagingEngine.h"
#include "imaging/codecs/jpeg.h"

namespace orvane {

/// The save settings of an instance that decide what a page is encoded to.
struct SaveSettings {
  std::int32_t outputType = kSaveTiff;
  std::int32_t tiffCompression = kTiffNone;
  std::int32_t pdfCompression = kPdfNone;
  JpegFactors jpegFactors;
  std::optional<double> resolutionX;  ///< of a PDF page whose source states none; absent: 200
  std::optional<double> resolutionY;
};

}  // namespace orvane
