#pragma once

#include <QImage>
#include <cstdint>

namespace orvane::sample {

enum class Design {
  Notice,    // an official notice: red head, title, sections
  Signed,    // its last page: text, signature, date and a red seal
  Register,  // a ruled table with a list of files
  Report,    // text around a photograph
  Dense,     // small print in two columns
};

// An A4 page as it lies on the glass, a little askew, drawn at `dpi`. `seed` chooses its words.
QImage drawPage(Design design, int dpi, std::uint64_t seed);

}  // namespace orvane::sample
