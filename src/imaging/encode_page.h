#pragma once

#include "imaging/LoadedPage.h"
#include "imaging/SaveSettings.h"
#include "imaging/codecs/lossless.h"
#include "imaging/page/EncodedImage.h"

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
