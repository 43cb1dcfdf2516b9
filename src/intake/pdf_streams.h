#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/pdf/qpdf.h"

namespace orvane {

/// How an image is coded after all filters that are no image codecs have been undone.
enum class PdfCodec { Plain, Jpeg, Fax };

/// The filters of an image's stream (ISO 32000-1 clause 7.4).
struct PdfFilters {
  PdfCodec codec = PdfCodec::Plain;
  std::vector<QPDFObjectHandle> names;       ///< without the codec
  std::vector<QPDFObjectHandle> parameters;  ///< of each
  QPDFObjectHandle codecParameters;          ///< null for none
};

/// Reads them. Throws Failure with the reason, for the operator, for those that cannot be undone.
PdfFilters readPdfFilters(QPDFObjectHandle stream);

/// The data of an image, coded as `filters.codec` says, up to `most` bytes; the rest is surplus.
/// Throws Failure when the filters do not accept the data.
Bytes pdfImageData(QPDF& pdf, const QPDFObjectHandle& stream, const PdfFilters& filters,
                   std::uint64_t most);

/// The data of a stream with all filters undone. Throws Failure, also for more than `most` bytes.
std::string pdfData(const QPDFObjectHandle& stream, std::uint64_t most);

/// Parses content, of which a page or a form consists.
void parsePdfContent(QPDF& pdf, const std::string& content,
                     QPDFObjectHandle::ParserCallbacks& callbacks);

}  // namespace orvane
