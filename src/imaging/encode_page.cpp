#include "imaging/encode_page.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/group4/group4.h"
#include "imaging/lzw/lossless.h"
#include "imaging/pdf/pdf_limits.h"
#include "imaging/raster/conversion.h"

namespace orvane {
namespace {

template <typename Encode>
Examined<EncodedImage> encodePixels(const LoadedPage& page, Encode encode) {
  Examined<Raster> pixels = page.pixels();
  return {encode(std::move(pixels.value)), std::move(pixels.data)};
}

// The copy, or without one the encoded pixels. A damaged page goes through its pixels, so that what
// can be read of it is kept; so does one whose codes other readers read differently.
template <typename Encode>
Examined<EncodedImage> copyOrPixels(const LoadedPage& page,
                                    Examined<std::optional<EncodedImage>> copy, Encode encode) {
  if (copy.value) return {*std::move(copy.value), std::move(copy.data)};
  Examined<EncodedImage> encoded = encodePixels(page, encode);
  copy.data.add(std::move(encoded.data));
  return {std::move(encoded.value), std::move(copy.data)};
}

Examined<EncodedImage> encodeBilevel(const LoadedPage& page, Group4Output output) {
  return copyOrPixels(page, page.group4Copy(output),
                      [](Raster&& pixels) { return encodeGroup4(toBilevel(std::move(pixels))); });
}

Examined<EncodedImage> encodeAsJpeg(const LoadedPage& page, JpegFactors factors) {
  return copyOrPixels(page, page.transcodedJpeg(factors), [&](Raster&& pixels) {
    return encodeJpeg(toGrayOrRgb8(std::move(pixels)), factors, page.resolution());
  });
}

Examined<EncodedImage> encodeForTiff(const LoadedPage& page, const SaveSettings& settings,
                                     SampleOrder order, const std::function<void()>& pause) {
  switch (settings.tiffCompression) {
    case kTiffNone:
      return encodePixels(page, [&](Raster&& pixels) { return encodeUncompressed(pixels, order); });
    case kTiffLzw:
      return encodePixels(page, [&](Raster&& pixels) { return encodeLzw(pixels, order, pause); });
    case kTiffGroup4:
      return encodeBilevel(page, Group4Output::Strips);
    case kTiffJpeg:
      return encodeAsJpeg(page, settings.jpegFactors);
    default:
      throw Failure("no TIFF compression has the code " + std::to_string(settings.tiffCompression));
  }
}

Examined<EncodedImage> encodeForPdf(const LoadedPage& page, const SaveSettings& settings) {
  switch (settings.pdfCompression) {
    case kPdfNone:
      return encodePixels(
          page, [](Raster&& pixels) { return inOnePlainStrip(toPdfForm(std::move(pixels))); });
    case kPdfGroup4:
      return encodeBilevel(page, Group4Output::OneStream);
    case kPdfJpeg:
      return encodeAsJpeg(page, settings.jpegFactors);
    default:
      throw Failure("no PDF compression has the code " + std::to_string(settings.pdfCompression));
  }
}

Examined<EncodedImage> encodeFor(Container container, const LoadedPage& page,
                                 const SaveSettings& settings, SampleOrder order,
                                 const std::function<void()>& pause) {
  switch (container) {
    case Container::Tiff:
      return encodeForTiff(page, settings, order, pause);
    case Container::Pdf:
      return encodeForPdf(page, settings);
    case Container::Jpeg:
      return encodeAsJpeg(page, settings.jpegFactors);
  }
  throw Failure("no such container");
}

double longestSide(const EncodedImage& image, const Resolution& resolution) {
  constexpr double kPointsPerInch = 72;
  return kPointsPerInch * std::max(image.width / resolution.x, image.height / resolution.y);
}

// A PDF page that states no resolution gets that of the settings; one that is longer than a PDF
// page may be counts as stating none. If it still is, it becomes as long as it may be.
void setPdfResolution(EncodedPage& page, Resolution stated, const SaveSettings& settings) {
  EncodedImage& image = page.image;
  Resolution unstated;
  unstated.x = settings.resolutionX.value_or(unstated.x);
  unstated.y = settings.resolutionY.value_or(unstated.y);
  image.resolution = stated.isStated ? stated : unstated;
  const double points = longestSide(image, image.resolution);
  if (points <= kMostPdfPoints) return;
  image.resolution = unstated;
  const double excess = longestSide(image, unstated) / kMostPdfPoints;
  if (excess > 1) {
    image.resolution.x *= excess;
    image.resolution.y *= excess;
  }
  page.resolutionLeftOut = L"PDF页面不能超过14400点，按其分辨率长" +
                           std::to_wstring(std::llround(points)) + L"点，改按每英寸" +
                           std::to_wstring(std::llround(image.resolution.x)) + L"点输出";
}

// Embeds the page's profile if it still describes the samples and the container can hold it;
// otherwise returns the reason.
std::wstring embedProfile(const LoadedPage& page, EncodedImage& image, Container container) {
  PageProfile profile = page.iccProfile();
  if (profile.bytes.empty()) return profile.leftOut;
  std::wstring misfit = iccMisfit(profile.bytes, image.photometric);
  if (misfit.empty() && container == Container::Pdf) misfit = iccMisfitInPdf(profile.bytes);
  if (misfit.empty()) image.iccProfile = std::move(profile.bytes);
  return misfit;
}

// What decides the codec and its parameters, apart from the container and the resolution.
std::pair<std::int32_t, std::optional<JpegFactors>> codecOf(Container container,
                                                            const SaveSettings& settings) {
  const auto withFactors = [&](std::int32_t code, bool isJpeg) {
    return std::pair(code, isJpeg ? std::optional(settings.jpegFactors) : std::nullopt);
  };
  switch (container) {
    case Container::Tiff:
      return withFactors(settings.tiffCompression, settings.tiffCompression == kTiffJpeg);
    case Container::Pdf:
      return withFactors(settings.pdfCompression, settings.pdfCompression == kPdfJpeg);
    case Container::Jpeg:
      return withFactors(0, true);
  }
  throw Failure("no such container");
}

}  // namespace

Container containerOf(std::int32_t outputType) {
  switch (outputType) {
    case kSaveTiff:
    case kSaveTiffBilevel:
    case kSaveTiffMultiBit:
      return Container::Tiff;
    case kSavePdf:
      return Container::Pdf;
    case kSaveJpeg:
      return Container::Jpeg;
    default:
      throw Failure("no file form has the code " + std::to_string(outputType));
  }
}

bool encodeAlike(const SaveSettings& one, const SaveSettings& other) {
  if (one.outputType != other.outputType) return false;
  const Container container = containerOf(one.outputType);
  return codecOf(container, one) == codecOf(container, other) &&
         one.resolutionX == other.resolutionX && one.resolutionY == other.resolutionY;
}

EncodedPage encodePage(const LoadedPage& page, const SaveSettings& settings, SampleOrder order,
                       const std::function<void()>& pause) {
  const Container container = containerOf(settings.outputType);
  Examined<EncodedImage> encoded = encodeFor(container, page, settings, order, pause);
  EncodedPage result{std::move(encoded.value), std::move(encoded.data), {}, {}};
  result.image.resolution = page.resolution();
  if (container == Container::Pdf) setPdfResolution(result, page.resolution(), settings);
  result.profileLeftOut = embedProfile(page, result.image, container);
  return result;
}

}  // namespace orvane
