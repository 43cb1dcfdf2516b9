#pragma once

#include <memory>
#include <string>

#include "intake/SourceFile.h"

namespace orvane {

/// Opens an image file of a scanner: TIFF, JPEG, PNG or PDF, by its first bytes, whatever its name
/// is. Returns null for a file that is no image by its first bytes and by its name. Throws Failure
/// with the reason, for the operator, for an image that cannot be taken: one of another kind (JPEG
/// 2000, JBIG2, BMP, GIF, WebP, HEIF), a damaged one, and a file that is only named like an image.
std::unique_ptr<SourceFile> openSourceFile(const std::wstring& path);

}  // namespace orvane
