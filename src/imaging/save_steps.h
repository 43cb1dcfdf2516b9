#pragma once

#include <cstdint>
#include <string>

#include "imaging/ImagingEngine.h"

/// Steps that the savers share.
namespace orvane {

/// Sets the target, creating its folder; an empty path means the source file itself.
void setTarget(ImagingEngine& ImgControl, const std::wstring& sSaveFilePath);

/// Writes the JPEG factor pair of a `CompressionRatios` of 0, 1 or 2; nothing for any other value.
void setJpegFactors(ImagingEngine& ImgControl, std::int16_t CompressionRatios);

/// The codes of a TIFF save without factors: Group 4 or JPEG by depth, or uncompressed.
void setTiffCodesByDepth(ImagingEngine& ImgControl, bool bCompression);

}  // namespace orvane
