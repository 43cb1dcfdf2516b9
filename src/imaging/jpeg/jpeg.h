#pragma once

#include <cstdint>
#include <string>

#include "imaging/jpeg/JpegFactors.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// Encodes an 8-bit gray (MinIsBlack) or RGB raster as one baseline JPEG stream (ITU-T T.81) with
/// JFIF density; RGB is stored as YCbCr with 2 x 2 chroma subsampling. Qualities are held
/// to 1..100. Throws Failure for a side over 65500 pixels.
EncodedImage encodeJpeg(const Raster& raster, JpegFactors factors, const Resolution& resolution);

/// Writes one JPEG stream to a new file `path`, with the image's ICC profile in APP2 segments. An
/// older file of that name is replaced, never written into. A failed write leaves no file.
void writeJpegFile(const std::wstring& path, const EncodedImage& image);

}  // namespace orvane
