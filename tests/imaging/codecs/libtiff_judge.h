#pragma once

#include <filesystem>

#include "imaging/page/EncodedImage.h"

/// Encoded images as TIFF files made with libtiff, and what libtiff makes of them.
namespace orvane::test {

/// Writes a TIFF file of one page that holds the image's strips as they are.
void writeTiff(const std::filesystem::path& file, const EncodedImage& image,
               bool bigEndian = false);

struct LibtiffReading {
  Bytes pixels;          ///< of all strips, 16-bit samples in the machine's order
  std::string messages;  ///< warnings and errors, one a line
};

LibtiffReading readWithLibtiff(const EncodedImage& image, bool bigEndian = false);

}  // namespace orvane::test
