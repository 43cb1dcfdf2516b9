#pragma once

#include <cstdint>

#include "imaging/raster/Raster.h"

namespace orvane {

/// The pixels of a raster inside a rectangle. Exact at every depth, also at those that Leptonica
/// does not have (24, 48 and 64 bits per pixel). Throws Failure when the rectangle holds no pixel
/// of the page.
Raster crop(const Raster& raster, std::int32_t left, std::int32_t top, std::int32_t width,
            std::int32_t height);

}  // namespace orvane
