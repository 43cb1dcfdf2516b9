#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "imaging/ImagingEngine.h"
#include "imaging/LoadedPage.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/EncodedImage.h"

/// From a loaded page to the image that a container embeds: which container a page goes to, and
/// which codec encodes it.
namespace orvane {

/// The save settings of an instance that decide how a page is encoded.
struct SaveSettings {
  std::int32_t outputType = kSaveTiff;
  std::int32_t tiffCompression = kTiffNone;
  std::int32_t pdfCompression = kPdfNone;
  JpegFactors jpegFactors;
  std::optional<double> resolutionX;  ///< of a PDF page whose source states none; absent: 200
  std::optional<double> resolutionY;
};

/// True if both settings encode every page alike. Settings that do not matter may differ.
bool encodeAlike(const SaveSettings& one, const SaveSettings& other);

enum class Container { Tiff, Jpeg, Pdf };

/// The container of a `SaveType`. Throws Failure for any other number.
Container containerOf(std::int32_t outputType);

/// A page as a container embeds it, and what was found on the way.
struct EncodedPage {
  EncodedImage image;
  DataState data;
  std::wstring profileLeftOut;     ///< why the page's ICC profile is left out; empty: it is not
  std::wstring resolutionLeftOut;  ///< why the resolution that the page states is not kept
};

/// Encodes a page. `order` is the byte order of a TIFF file. `pause` is called now and then while
/// the LZW encoder works. Shares no state with other calls, so that pages can be encoded on any
/// thread. Damage is reported in the result; an encoding that cannot be made throws Failure.
EncodedPage encodePage(const LoadedPage& page, const SaveSettings& settings, SampleOrder order,
                       const std::function<void()>& pause);

}  // namespace orvane
