#pragma once

#include "imaging/codecs/Random.h"
#include "imaging/page/Raster.h"

namespace orvane::test {

/// A 1-bit page: by `kind` white, black, noise of some density, drawn boxes, strokes like those of
/// text, or rows that differ little from the one above.
Raster bilevelPage(Random& random, int kind, std::uint32_t width, std::uint32_t height);

inline constexpr int kBilevelKinds = 6;

}  // namespace orvane::test
