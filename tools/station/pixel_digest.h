#pragma once

#include <string>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane::station {

/// A digest (SHA-256) of a page's pixels with their size and form: two pages have the same one only
/// if they are equal in every pixel, whatever their compression. 1-bit pages in black and white
/// are compared by their ink, so it does not matter whether 0 or 1 is black.
std::string pixelDigest(const Raster& page);

/// The same digest, made of Group 4 strips that have been verified, without drawing the pixels.
std::string pixelDigest(const EncodedImage& group4);

}  // namespace orvane::station
