#pragma once

#include <cstdint>
#include <string>

#include "imaging/raster/EncodedImage.h"

namespace orvane::station {

/// What the notices need of a page.
struct PageFacts {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  Resolution resolution;
  std::string digest;    ///< of the pixels
  bool isBlank = false;  ///< measured on request only, and so is the next one
  double skew = 0.0;     ///< in degrees, as `measureSkew` returns it; 0 up to 1 degree
};

/// Checks the first page of an image file, see `checkPage`, and returns what was seen. With
/// `measures` its pixels are decoded and measured. Several threads may call it. Throws Failure
/// "<path>: <reason>" for a page that cannot be exported.
PageFacts examinePage(const std::wstring& path, bool measures);

}  // namespace orvane::station
