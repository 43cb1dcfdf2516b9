#pragma once

#include <cstdint>

#include "imaging/pdf/qpdf.h"

namespace orvane {

/// The image of a scanned page.
struct PdfPageImage {
  QPDFObjectHandle image;
  double widthInches = 0;  ///< on the page, before it is turned
  double heightInches = 0;
  std::uint16_t orientation = 1;  ///< of the page, as in TIFF 6.0
};

/// Finds the image of a page that shows one upright image, which covers it, and nothing else.
/// Throws Failure with the reason for any other page; the reason continues "第 3 页".
PdfPageImage imageOfPdfPage(QPDF& pdf, const QPDFObjectHandle& page);

}  // namespace orvane
