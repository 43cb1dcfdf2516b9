#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "imaging/page/EncodedImage.h"
#include "imaging/page/tiff_kinds.h"

namespace orvane::test {

/// A document as it is to be embedded, and the same pixels in a file that another program wrote.
struct SampleDocument {
  std::string name;
  std::vector<EncodedImage> pages;
  std::filesystem::path reference;  ///< TIFF for the lossless kinds, JPEG for the others
};

/// The strips of every page of a TIFF file as they lie there.
std::vector<EncodedImage> takePages(const std::filesystem::path& tiff);

/// Three pages of a kind, made by libtiff in `folder`.
SampleDocument makeDocument(const std::filesystem::path& folder, const std::string& name,
                            const TiffKind& kind);

/// A document of every kind that a container embeds. The JPEG ones have one page, made by cjpeg.
std::vector<SampleDocument> makeDocuments(const std::filesystem::path& folder);

/// A small plain gray page whose pixels follow from `seed`.
EncodedImage plainPage(unsigned seed);

}  // namespace orvane::test
