#pragma once

#include "imaging/raster/Raster.h"

/// CIE 1976 L*a*b* pages in colours that a screen shows.

namespace orvane {

/// How a file stores L, a and b.
enum class LabCoding {
  CieSigned,  ///< TIFF 6.0 section 23: a and b have a sign
  Icc,        ///< TIFF Technical Note 4: a and b have an offset, and 16-bit L ends at 0xFF00
};

/// The x and y of a colour in the CIE 1931 diagram.
struct Chromaticity {
  double x = 0;
  double y = 0;
};

/// The white of the ICC's connection space, and of Lab pages that state none.
inline constexpr Chromaticity kD50{0.34570, 0.35854};

/// 8-bit sRGB (IEC 61966-2-1) of a raster of three samples, 8 or 16 bits each. `white` is the white
/// that L = 100 stands for; it becomes the white of sRGB (linear Bradford adaptation, ICC.1 annex
/// E), so that neutral tones stay neutral. A white that no light has counts as D50. Colours outside
/// of sRGB are clipped.
Raster labToRgb(const Raster& lab, LabCoding coding, Chromaticity white);

}  // namespace orvane
