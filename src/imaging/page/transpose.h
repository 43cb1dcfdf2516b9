#pragma once

#include "imaging/page/Raster.h"

namespace orvane {

/// The raster with rows and columns swapped. Exact at every depth.
Raster transposed(const Raster& raster);

}  // namespace orvane
