#pragma once

#include <array>
#include <string>
#include <vector>

#include "imaging/page/Raster.h"

namespace orvane::test {

struct LibjpegReading {
  Raster pixels;
  std::string messages;                         ///< warnings and the error, one a line
  std::vector<std::array<unsigned, 64>> steps;  ///< quantisation of each component
};

/// What libjpeg makes of a stream, chroma upsampled by repetition.
LibjpegReading readWithLibjpeg(const Bytes& stream);

}  // namespace orvane::test
