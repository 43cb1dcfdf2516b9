#pragma once

#include <cstdint>

#include "imaging/raster/icc_profile.h"
#include "imaging/tiff/TiffLayout.h"

namespace orvane {

/// Reads the profile of a page: the one in its directory at `directory` (TIFF tag 34675), or
/// without that the one in its first JPEG stream (APP2 segments, ICC.1 annex B.4). Only a sound one
/// that describes the samples of the page is taken; none of its faults is a failure.
PageProfile readIccProfile(const TiffHandle& tiff, const TiffLayout& layout,
                           std::uint64_t directory);

}  // namespace orvane
