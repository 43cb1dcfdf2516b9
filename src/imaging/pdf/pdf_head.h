#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// Object numbers of what every PDF file of this program holds. The page objects follow behind.
enum PdfObject : std::uint32_t {
  kPdfCatalog = 1,
  kPdfMetadata = 2,
  kPdfProfile = 3,
  kPdfRootPages = 4,
  kPdfFirstPageObject = 5,
};

/// The front of every PDF file of this program, the same in each: header, catalog, XMP metadata and
/// the sRGB output intent that PDF/A-1b (ISO 19005-1) asks for.
struct PdfHead {
  std::string text;
  std::vector<std::uint64_t> offsets;  ///< of the objects 1 to 3
};
const PdfHead& pdfHead();

/// The text in front of an object's own, and behind it.
std::string beginPdfObject(std::uint32_t number);
constexpr char kEndPdfObject[] = "\nendobj\n";
/// The text between a stream's dictionary and its bytes, and after them.
constexpr char kBeginPdfStream[] = "\nstream\n";
constexpr char kEndPdfStream[] = "\nendstream";

/// "<number> 0 R"
std::string pdfReference(std::uint32_t number);

}  // namespace orvane
