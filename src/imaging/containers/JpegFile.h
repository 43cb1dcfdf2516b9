#pragma once

#include <string>

#include "imaging/page/EncodedImage.h"

namespace orvane {

/// Writes `path` anew with one JPEG stream. An older file of that name is replaced, never written
/// into. A failed write leaves no file.
void writeJpegFile(const std::wstring& path, const EncodedImage& image);

}  // namespace orvane
