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

// Draws an A4 page at `dpi`, slightly rotated as on the glass of a scanner. `seed` selects the
// words.
QImage drawPage(Design design, int dpi, std::uint64_t seed);

}  // namespace orvane::sample
