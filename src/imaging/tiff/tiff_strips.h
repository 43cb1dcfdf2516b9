#pragma once

#include <optional>

#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffLayout.h"

/// The strips of the current directory as they are stored in the file, for pages that need not be
/// decoded. Nothing when a strip cannot be read whole.

namespace orvane {

/// See TiffPage::group4Strips.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout);

/// See TiffPage::jpegStrips.
std::optional<EncodedImage> readJpegStrips(const TiffHandle& tiff, const TiffLayout& layout);

/// The rows of each strip of a Group 3 page up to its return-to-control, which is six end-of-line
/// codes in sequence (ITU-T T.4): no row after it was ever coded. A strip without one, or with
/// enough rows, counts as full. Nothing when every strip is full, when rows come after those that
/// are missing, when there is no row, and for other pages.
std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout);

}  // namespace orvane
