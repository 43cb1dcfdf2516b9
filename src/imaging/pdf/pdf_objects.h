#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/raster/EncodedImage.h"

/// The objects of a PDF file as text (ISO 32000-1 section 7.3), as PDF/A-1b (ISO 19005-1) asks for
/// them. Where they are stored in the file is the matter of PdfLayout.

namespace orvane {

/// Object numbers that are the same in every file. The objects of the pages follow.
enum PdfObject : std::uint32_t {
  kPdfCatalog = 1,
  kPdfMetadata = 2,
  kPdfProfile = 3,
  kPdfRootPages = 4,
  kPdfFirstPageObject = 5,
};

/// The text before the content of an object, and after it.
std::string beginPdfObject(std::uint32_t number);
inline constexpr char kEndPdfObject[] = "\nendobj\n";
/// The text between a stream's dictionary and its bytes, and after the bytes.
inline constexpr char kBeginPdfStream[] = "\nstream\n";
inline constexpr char kEndPdfStream[] = "\nendstream";

/// "<number> 0 R"
std::string pdfReference(std::uint32_t number);

inline ByteView bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The first part of every file: header, catalog, XMP metadata and the sRGB output intent.
struct PdfHead {
  std::string text;
  std::vector<std::uint64_t> offsets;  ///< of the objects 1 to 3
};
const PdfHead& pdfHead();

/// A page's size in points, as the file states it: up to 4 decimals, no trailing zeros.
struct PdfPageSize {
  std::string width;
  std::string height;
};

/// Pixels / resolution in points. Throws Failure, naming `path`, for a side over 14,400 points, the
/// most that a PDF reader has to accept (ISO 32000-1 annex C).
PdfPageSize pdfPageSize(const std::wstring& path, const EncodedImage& image);

/// The dictionary of the image object. `profile` is the object of its ICC profile, 0 for the device
/// colour space. Throws Failure, naming `path`, for an image that PDF/A-1b cannot hold as it is: 16
/// bits, CMYK, alpha, LZW, more than one stream.
std::string pdfImageDictionary(const std::wstring& path, const EncodedImage& image,
                               std::uint32_t profile);

/// The content stream of a page, with its dictionary: the image over the whole page.
std::string pdfPageContent(const PdfPageSize& size);

/// The dictionary of page object `page` in the page tree's leaf `leaf`. Its image and its content
/// stream are the two objects before it.
std::string pdfPageDictionary(std::uint32_t leaf, std::uint32_t page, const PdfPageSize& size);

/// The number of colour components of the image, which for a palette are those of its entries: 1
/// or 3.
int pdfColours(const EncodedImage& image);

/// The dictionary of an ICC profile of `length` bytes for 1 or 3 colour components.
std::string pdfProfileDictionary(int colours, std::uint64_t length);

/// A 128-bit hash of byte strings: the same strings give the same hash on every machine. It tells
/// documents and profiles apart; it does not protect against forgery.
class PdfFingerprint {
 public:
  PdfFingerprint& add(ByteView bytes);
  PdfFingerprint& add(std::string_view text) { return add(bytesOf(text)); }
  /// 32 hexadecimal digits.
  std::string hex() const;

 private:
  void mix(std::uint64_t word);

  std::uint64_t first_ = 0x243F6A8885A308D3;  // the first digits of pi after the point
  std::uint64_t second_ = 0x13198A2E03707344;
};

}  // namespace orvane
