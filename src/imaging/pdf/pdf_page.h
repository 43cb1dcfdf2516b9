#pragma once

#include <cstdint>
#include <string>

#include "imaging/pdf/PdfLayout.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// The size of a page in points, as a PDF file writes it: up to 4 decimals, no zeros at the end.
struct PdfPageSize {
  std::string width;
  std::string height;
};

/// Pixels / resolution in points. Throws Failure, naming `path`, for a side over 14,400 points, the
/// most that a PDF reader has to take (ISO 32000-1 annex C).
PdfPageSize pdfPageSize(const std::wstring& path, const EncodedImage& image);

/// The dictionary of the image object; `profile` is the object of its ICC profile, 0 for the device
/// colour space. Throws Failure, naming `path`, for an image that PDF/A-1b cannot hold as it is: 16
/// bits, CMYK, alpha, LZW, more than one stream.
std::string pdfImageDictionary(const std::wstring& path, const EncodedImage& image,
                               std::uint32_t profile);

/// The components of the image's colours, which for a palette are those of its entries: 1 or 3.
int pdfColours(const EncodedImage& image);

/// The dictionary of an ICC profile of `length` bytes for colours of 1 or 3 components.
std::string pdfProfileDictionary(int colours, std::uint64_t length);

/// What an ICC profile is known again by.
std::string pdfProfileFingerprint(const std::string& dictionary, ByteView profile);

/// The content of the page's content stream: the image, over all of the page.
std::string pdfPageContent(const PdfPageSize& size);

std::string pdfPageDictionary(const PdfPageNumbers& numbers, const PdfPageSize& size);

}  // namespace orvane
