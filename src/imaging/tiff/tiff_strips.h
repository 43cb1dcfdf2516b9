#pragma once

#include <optional>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffLayout.h"

/// The strips of the current directory as they lie in the file, for pages that need not become
/// pixels. Nothing when a strip cannot be read whole.

namespace orvane {

/// See TiffPage::group4Strips.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout);

/// See TiffPage::jpegStrips.
std::optional<EncodedImage> readJpegStrips(const TiffHandle& tiff, const TiffLayout& layout);

/// The bytes of all strips.
std::optional<std::vector<Bytes>> readStrips(const TiffHandle& tiff, const TiffLayout& layout);

/// The bytes of all strips of a fax page, brought to fill order 1 (TIFF 6.0 FillOrder).
std::optional<std::vector<Bytes>> readFaxStrips(const TiffHandle& tiff, const TiffLayout& layout);

/// The rows of each strip of a Group 3 page up to its return-to-control, which is six end-of-line
/// codes in a row (ITU-T T.4): the last row has come, and whatever else a reader asks for was never
/// coded. A strip without one, or with rows enough, counts as full. Nothing when every strip is
/// full, when rows come after those that are missing, when there is no row, and for other pages.
std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout);

}  // namespace orvane
