#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace orvane {

/// A resolution as a JFIF density: whole dots per inch, 1 to 65535.
inline std::uint16_t jfifDensity(double dotsPerInch) {
  if (!(dotsPerInch >= 1.0)) return 1;  // no number is below 1 too
  return static_cast<std::uint16_t>(std::lround(std::min(dotsPerInch, 65535.0)));
}

}  // namespace orvane
