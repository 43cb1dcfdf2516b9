#pragma once

#include <cstdint>
#include <optional>

#include "imaging/ImagingEngine.h"
#include "imaging/LoadedPage.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/lzw/lossless.h"
#include "imaging/raster/EncodedImage.h"

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

/// From a loaded page to the image that a container embeds. Damage found in the page's data is
/// noted in the page; a form that cannot be made throws Failure.

namespace orvane {

/// For a TIFF file, by `SaveSettings::tiffCompression`. `order` is the byte order of the file.
EncodedImage encodeForTiff(LoadedPage& page, const SaveSettings& settings, SampleOrder order);

/// For a PDF file, by `SaveSettings::pdfCompression`. The output resolution of the settings counts
/// for a page that states none.
EncodedImage encodeForPdf(LoadedPage& page, const SaveSettings& settings);

/// For a JPEG file.
EncodedImage encodeForJpeg(LoadedPage& page, const SaveSettings& settings);

}  // namespace orvane
