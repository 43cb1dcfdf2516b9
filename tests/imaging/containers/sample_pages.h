#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "imaging/page/EncodedImage.h"

namespace orvane::test {

/// A document as it is to be embedded, and a file that shows the same: TIFF of libtiff for the
/// lossless kinds, the stream itself for JPEG.
struct SampleDocument {
  std::string name;
  bool fitsPdf;
  std::vector<EncodedImage> pages;
  std::filesystem::path reference;
};

/// A document of every kind that a container embeds.
std::vector<SampleDocument> makeDocuments(const std::filesystem::path& folder);

/// A small plain gray page whose pixels follow from `seed`.
EncodedImage plainPage(unsigned seed);

}  // namespace orvane::test
