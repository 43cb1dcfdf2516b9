#pragma once

#include "imaging/pdf/qpdf.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane {

/// Throws Failure with the reason for an image that cannot become a page, as far as that can be
/// known without its data. The reason continues "第 3 页".
void requirePdfImage(const QPDFObjectHandle& image);

/// Makes a page of an image (ISO 32000-1 clause 8.9.5), without resolution and orientation. JPEG
/// and fax data is embedded as it is; everything else is encoded without loss. Throws Failure with
/// the reason.
EncodedImage pdfImagePage(QPDF& pdf, const QPDFObjectHandle& image);

}  // namespace orvane
