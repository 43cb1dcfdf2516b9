#include "imaging/encode_page.h"

#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/group4/group4.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/conversion.h"

namespace orvane {
namespace {

// Strips that are whole are copied. A damaged page goes through its pixels, so that the damage is
// noted and what can be read of it is kept, and so does one whose codes other readers take
// differently.
EncodedImage encodeBilevel(LoadedPage& page, Group4Form form) {
  if (std::optional<EncodedImage> copy = page.group4Copy(form)) return *std::move(copy);
  return encodeGroup4(toBilevel(page.pixels()));
}

EncodedImage withResolution(EncodedImage image, const Resolution& resolution) {
  image.resolution = resolution;
  return image;
}

enum class Target { Tiff, Jpeg, Pdf };

// The page's profile goes with every image whose samples it still describes, if the target can hold
// it.
EncodedImage withProfile(LoadedPage& page, EncodedImage image, Target target) {
  const auto& [profile, leftOut] = page.iccProfile();
  std::wstring misfit = leftOut;
  if (!profile.empty()) misfit = iccMisfit(profile, image.photometric);
  if (!profile.empty() && misfit.empty() && target == Target::Pdf) misfit = iccMisfitInPdf(profile);
  if (misfit.empty()) image.iccProfile = profile;
  page.noteProfileLeftOut(std::move(misfit));
  return image;
}

EncodedImage encodeAsJpeg(LoadedPage& page, JpegFactors factors) {
  if (auto transcoded = page.transcodedJpeg(factors)) return *std::move(transcoded);
  return withResolution(encodeJpeg(toGrayOrRgb8(page.pixels()), factors, page.resolution()),
                        page.resolution());
}

EncodedImage encodeTiff(LoadedPage& page, const SaveSettings& settings, SampleOrder order) {
  switch (settings.tiffCompression) {
    case kTiffNone:
      return encodeUncompressed(page.pixels(), order);
    case kTiffLzw:
      return encodeLzw(page.pixels(), order);
    case kTiffGroup4:
      return encodeBilevel(page, Group4Form::Strips);
    case kTiffJpeg:
      return encodeAsJpeg(page, settings.jpegFactors);
    default:
      throw Failure("no TIFF compression has the code " + std::to_string(settings.tiffCompression));
  }
}

EncodedImage encodePdf(LoadedPage& page, const SaveSettings& settings) {
  switch (settings.pdfCompression) {
    case kPdfNone:
      return encodeUncompressed(toPdfForm(page.pixels()), SampleOrder::BigEndian);
    case kPdfGroup4:
      return encodeBilevel(page, Group4Form::OneStream);
    case kPdfJpeg:
      return encodeAsJpeg(page, settings.jpegFactors);
    default:
      throw Failure("no PDF compression has the code " + std::to_string(settings.pdfCompression));
  }
}

}  // namespace

EncodedImage encodeForTiff(LoadedPage& page, const SaveSettings& settings, SampleOrder order) {
  return withProfile(page, withResolution(encodeTiff(page, settings, order), page.resolution()),
                     Target::Tiff);
}

EncodedImage encodeForPdf(LoadedPage& page, const SaveSettings& settings) {
  Resolution resolution = page.resolution();
  if (!resolution.isStated) {
    resolution.x = settings.resolutionX.value_or(resolution.x);
    resolution.y = settings.resolutionY.value_or(resolution.y);
  }
  return withProfile(page, withResolution(encodePdf(page, settings), resolution), Target::Pdf);
}

EncodedImage encodeForJpeg(LoadedPage& page, const SaveSettings& settings) {
  return withProfile(page, encodeAsJpeg(page, settings.jpegFactors), Target::Jpeg);
}

}  // namespace orvane
