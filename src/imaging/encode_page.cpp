#include "imaging/encode_page.h"

#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/codecs/group4.h"
#include "imaging/codecs/jpeg.h"
#include "imaging/page/conversion.h"

namespace orvane {
namespace {

// Strips that are whole are copied; a damaged page goes through its pixels, so that the damage is
// noted and what can be read of it is kept.
EncodedImage encodeBilevel(LoadedPage& page) {
  if (std::optional<EncodedImage> strips = page.wholeGroup4Strips()) return *std::move(strips);
  return encodeGroup4(toBilevel(page.pixels()));
}

EncodedImage withResolution(EncodedImage image, const Resolution& resolution) {
  image.resolution = resolution;
  return image;
}

EncodedImage encodeTiff(LoadedPage& page, const SaveSettings& settings, SampleOrder order) {
  switch (settings.tiffCompression) {
    case kTiffNone:
      return encodeUncompressed(page.pixels(), order);
    case kTiffLzw:
      return encodeLzw(page.pixels(), order);
    case kTiffGroup4:
      return encodeBilevel(page);
    case kTiffJpeg:
      return encodeForJpeg(page, settings);
    default:
      throw Failure("no TIFF compression has the code " + std::to_string(settings.tiffCompression));
  }
}

EncodedImage encodePdf(LoadedPage& page, const SaveSettings& settings) {
  switch (settings.pdfCompression) {
    case kPdfNone:
      return encodeUncompressed(toPdfForm(page.pixels()), SampleOrder::BigEndian);
    case kPdfGroup4:
      return joinGroup4Strips(encodeBilevel(page));
    case kPdfJpeg:
      return encodeForJpeg(page, settings);
    default:
      throw Failure("no PDF compression has the code " + std::to_string(settings.pdfCompression));
  }
}

}  // namespace

EncodedImage encodeForTiff(LoadedPage& page, const SaveSettings& settings, SampleOrder order) {
  return withResolution(encodeTiff(page, settings, order), page.resolution());
}

EncodedImage encodeForPdf(LoadedPage& page, const SaveSettings& settings) {
  Resolution resolution = page.resolution();
  if (!resolution.isStated) {
    resolution.x = settings.resolutionX.value_or(resolution.x);
    resolution.y = settings.resolutionY.value_or(resolution.y);
  }
  return withResolution(encodePdf(page, settings), resolution);
}

EncodedImage encodeForJpeg(LoadedPage& page, const SaveSettings& settings) {
  if (auto transcoded = page.transcodedJpeg(settings.jpegFactors)) return *std::move(transcoded);
  return withResolution(
      encodeJpeg(toGrayOrRgb8(page.pixels()), settings.jpegFactors, page.resolution()),
      page.resolution());
}

}  // namespace orvane
