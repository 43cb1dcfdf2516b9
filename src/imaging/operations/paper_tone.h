#pragma once

#include <array>
#include <cstdint>

#include "imaging/page/Raster.h"

namespace orvane {

/// The tone of the paper, one value a channel (gray: only the first), for an 8-bit gray or RGB
/// page: the brightest tone that is common along the border. White when none is common.
std::array<std::uint8_t, 3> paperTone(const Raster& page);

}  // namespace orvane
