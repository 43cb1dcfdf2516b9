#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/OutputFile.h"
#include "imaging/pdf/PdfLayout.h"
#include "imaging/pdf/pdf_page.h"

namespace orvane {

/// Where the objects of one page stand in a PDF file of this program.
struct PdfPagePlace {
  PdfPageNumbers numbers;
  PdfPageOffsets at;
  std::uint64_t begin() const { return numbers.profile == 0 ? at.image : at.profile; }
};

/// Reads back what a PDF file of this program ends in. The few numbers found there are put into an
/// outline, and the file must hold exactly the text that this outline gives: everything else is
/// another program's file, or damaged, and throws Failure. `profiles` is left empty.
PdfOutline readPdfOutline(const OutputFile& file);

/// The places of all pages, read from all cross-reference sections.
std::vector<PdfPagePlace> readPdfPages(const OutputFile& file, const PdfOutline& outline);

/// The ICC profiles in the file, whose pages are only looked through when there is one.
std::vector<PdfProfile> readPdfProfiles(const OutputFile& file, const PdfOutline& outline);

/// The dictionary of a page's image.
std::string readPdfImageDictionary(const OutputFile& file, const PdfPagePlace& place);

/// The size of a page, out of its page object.
PdfPageSize readPdfPageSize(const OutputFile& file, const PdfPagePlace& place);

/// Throws Failure unless the object of that number, and nothing else, fills `from` to `end`.
void requirePdfObject(const OutputFile& file, std::uint32_t number, std::uint64_t from,
                      std::uint64_t end);

}  // namespace orvane
