#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What tools that we did not write say of a file.
namespace orvane::test {

struct PageLook {
  std::string coding;  ///< "TIFF CCITT Group 4", "TIFF LZW", "PDF ccitt", "JPEG file", ...
  std::string size;    ///< "827x1169 at 100 dpi"
  bool operator==(const PageLook&) const = default;
};

void PrintTo(const PageLook& page, std::ostream* stream);

/// The pages of a TIFF (tiffinfo), JPEG (djpeg, identify) or PDF file (qpdf, pdfinfo, pdfimages),
/// by its content. Throws when a tool finds fault with the file.
std::vector<PageLook> pagesOf(const std::filesystem::path& file);

/// True for a TIFF page of 1 bit.
bool isBilevel(const std::filesystem::path& file);

/// True when page `index`, from 0, of a file shows exactly the pixels of `source`.
bool hasPixelsOf(const std::filesystem::path& source, const std::filesystem::path& file,
                 std::size_t index);

}  // namespace orvane::test
