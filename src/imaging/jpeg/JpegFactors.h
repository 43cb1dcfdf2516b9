#pragma once

#include <cstdint>

namespace orvane {

/// The two factors of a JPEG save; a larger one compresses more.
struct JpegFactors {
  std::int16_t major = 20;  ///< luminance quality is 100 - major
  std::int16_t minor = 16;  ///< chrominance quality is 100 - minor

  bool operator==(const JpegFactors&) const = default;
};

}  // namespace orvane
