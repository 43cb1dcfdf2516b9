#pragma once

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// Reads the head of a PNG file (ISO/IEC 15948). Throws Failure with the reason, for the operator,
/// for one that cannot be taken.
void requirePng(ByteView file);

/// Makes a page of a PNG file, with its resolution and its ICC profile: Group 4 for black and
/// white, LZW for everything else. What is transparent becomes white. Throws Failure with the
/// reason, for the operator.
EncodedImage pngPage(ByteView file);

}  // namespace orvane
