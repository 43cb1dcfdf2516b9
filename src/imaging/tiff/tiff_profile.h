#pragma once

#include <vector>

#include "imaging/raster/icc_profile.h"
#include "imaging/tiff/TiffLayout.h"
#include "imaging/tiff/TiffStructure.h"

namespace orvane {

/// Reads the profile of a page: the one in its directory (TIFF tag 34675), whose entries are given,
/// or without that the one in its first JPEG stream (APP2 segments, ICC.1 annex B.4). Only a sound
/// profile that describes the samples of the page is taken; none of its faults is a failure.
PageProfile readIccProfile(const TiffHandle& tiff, const TiffLayout& layout,
                           const std::vector<TiffEntry>& entries);

}  // namespace orvane
