#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/OutputFile.h"
#include "imaging/pdf/PdfLayout.h"
#include "imaging/pdf/pdf_objects.h"

/// Reads PDF files of this program back. The few numbers that a layout consists of are looked for
/// in the file; then the file must contain exactly the text that the layout gives. Where nothing
/// else is said, another program's file and a damaged one throw Failure.

namespace orvane {

/// Where the objects of one page are stored, and their numbers.
struct PdfPagePlace {
  std::uint32_t leaf = 0;  ///< of the page tree, to which the page belongs
  std::uint32_t page = 0;
  std::uint64_t profileAt = 0;  ///< 0: the page brings no profile
  std::uint64_t imageAt = 0;
  std::uint64_t contentAt = 0;
  std::uint64_t pageAt = 0;

  bool hasProfile() const { return profileAt != 0; }
  std::uint32_t profile() const { return page - 3; }
  std::uint32_t image() const { return page - 2; }
  std::uint32_t content() const { return page - 1; }
  std::uint64_t begin() const { return hasProfile() ? profileAt : imageAt; }
};

/// The layout of a file, without `profiles`; empty for a file that this program did not write, and
/// for a damaged one. Reads the head and the tail only.
std::optional<PdfLayout> readOwnPdfLayout(const OutputFile& file);

/// The layout with `profiles`. The pages are only looked through when there are any.
PdfLayout readPdfLayoutToAppend(const OutputFile& file);

/// The places of all pages, read from all cross-reference sections.
std::vector<PdfPagePlace> readPdfPages(const OutputFile& file, const PdfLayout& layout);

/// The dictionary of a page's image.
std::string readPdfImageDictionary(const OutputFile& file, const PdfPagePlace& place);

/// The size of a page, as its page object states it.
PdfPageSize readPdfPageSize(const OutputFile& file, const PdfPagePlace& place);

/// Throws Failure unless the object of that number begins at `begin` and ends at `end`.
void requirePdfObject(const OutputFile& file, std::uint32_t number, std::uint64_t begin,
                      std::uint64_t end);

}  // namespace orvane
