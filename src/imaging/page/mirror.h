#pragma once

#include "imaging/page/Raster.h"

namespace orvane {

/// Turns left and right about, in place. Exact at every depth.
void mirrorColumns(Raster& raster);

/// Turns top and bottom about, in place.
void mirrorRows(Raster& raster);

}  // namespace orvane
