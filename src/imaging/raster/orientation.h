#pragma once

#include <cstdint>

#include "imaging/raster/Raster.h"

namespace orvane {

/// Brings a raster upright that was stored under a TIFF 6.0 Orientation value (1 to 8). Exact at
/// every depth.
Raster toUpright(Raster raster, std::uint16_t orientation);

/// Turns a raster by a quarter turn to the left `quarterTurns` times (negative: to the right).
/// Exact at every depth.
Raster rotateQuarters(Raster raster, int quarterTurns);

}  // namespace orvane
