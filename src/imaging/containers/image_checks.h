#pragma once

#include <string>

#include "imaging/page/EncodedImage.h"

namespace orvane {

/// Throws Failure, naming `path`, unless the strips, the palette and the resolution of the image
/// fit together: what a container embeds, a reader must be able to take out.
void requireWholeImage(const std::wstring& path, const EncodedImage& image);

/// Bytes of one uncompressed row.
std::uint64_t plainRowBytes(const EncodedImage& image);

}  // namespace orvane
