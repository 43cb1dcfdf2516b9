#pragma once

#include <cstdint>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// What the container of a JPEG stream says of its samples.
struct JpegMeaning {
  bool isInverted = false;      ///< the samples are the complements of their values
  bool isInvertedCmyk = false;  ///< those of CMYK alone: the habit of JPEG files
  bool isPlainRgb = false;      ///< three components are RGB unless an Adobe marker says otherwise
};

/// A JPEG file states no such things itself.
constexpr JpegMeaning kMeaningInFile{.isInvertedCmyk = true};

/// What can be known of a JPEG stream without its image data.
struct JpegSummary {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned components = 0;
};

/// Reads the head of a stream (ITU-T T.81). Throws Failure with the reason, for the operator, for
/// one that cannot be taken.
JpegSummary readJpegSummary(ByteView stream);

/// Makes a page of a JPEG stream, with the resolution, the orientation and the ICC profile that the
/// stream states. A sequential stream of one scan is embedded as it is; a progressive or
/// arithmetic-coded one, or one of several scans, is coded again from its coefficients, which loses
/// nothing. What TIFF cannot hold as JPEG (unusual subsampling, CMYK, inverted samples) is decoded
/// and becomes LZW. Throws Failure with the reason, for the operator.
EncodedImage jpegPage(ByteView stream, const JpegMeaning& meaning);

}  // namespace orvane
