#pragma once

#include <cstdint>
#include <optional>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/StoredJpeg.h"
#include "imaging/tiff/TiffHandle.h"
#include "imaging/tiff/TiffLayout.h"

/// The strips and tiles of the current directory as they are stored in the file.

namespace orvane {

/// The order of the bits in the bytes of strips and tiles (TIFF 6.0 FillOrder).
std::uint16_t fillOrderOf(const TiffHandle& tiff);

/// The bytes of a strip or tile that the file holds: fewer than its byte count says when the file
/// ends before. They are in `buffer`, or in the memory of the file.
ByteView storedBlock(const TiffHandle& tiff, std::uint32_t index, Bytes& buffer);

/// The same with the bits of each byte in fill order 1.
ByteView storedBlockInFillOrder1(const TiffHandle& tiff, std::uint32_t index, Bytes& buffer);

/// See TiffPage::group4Strips.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout);

/// See TiffPage::storedJpeg. The result refers to `tiff`.
std::optional<StoredJpeg> storedJpeg(const TiffHandle& tiff, const TiffLayout& layout);

/// The rows of each strip of a Group 3 page up to its return-to-control, which is six end-of-line
/// codes in sequence (ITU-T T.4): no row after it was ever coded. A strip without one, or with
/// enough rows, counts as full. Nothing when every strip is full, when rows come after those that
/// are missing, when there is no row, when strips overlap or cannot be read whole, and for other
/// pages.
std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout);

}  // namespace orvane
