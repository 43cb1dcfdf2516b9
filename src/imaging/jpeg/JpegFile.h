#pragma once

#include <string>

#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// Writes one JPEG stream to a new file `path`, the image's ICC profile in APP2 segments of it. An
/// older file of that name is replaced, never written into. A failed write leaves no file.
void writeJpegFile(const std::wstring& path, const EncodedImage& image);

}  // namespace orvane
