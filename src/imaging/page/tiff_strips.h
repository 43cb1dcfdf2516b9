#pragma once

#include <optional>
#include <vector>

#include "imaging/page/Bytes.h"
#include "imaging/page/EncodedImage.h"
#include "imaging/page/TiffLayout.h"

/// The strips of the current directory as they lie in the file, for pages that need not become
/// pixels. Nothing when a strip cannot be read whole.
namespace orvane {

/// See TiffPage::group4Strips.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout);

/// See TiffPage::jpegStrips.
std::optional<EncodedImage> readJpegStrips(const TiffHandle& tiff, const TiffLayout& layout);

/// The bytes of all strips.
std::optional<std::vector<Bytes>> readStrips(const TiffHandle& tiff, const TiffLayout& layout);

}  // namespace orvane
