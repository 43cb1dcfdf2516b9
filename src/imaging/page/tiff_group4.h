#pragma once

#include <optional>

#include "imaging/page/EncodedImage.h"
#include "imaging/page/TiffLayout.h"

namespace orvane {

/// The strips of the current directory as they lie in the file, when it is an upright 1-bit page in
/// plain Group 4; see TiffPage::group4Strips.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout);

}  // namespace orvane
