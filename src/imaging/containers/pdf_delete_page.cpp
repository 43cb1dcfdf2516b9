#include <string>
#include <vector>

#include "imaging/containers/OutputFile.h"
#include "imaging/containers/PdfFile.h"
#include "imaging/containers/PdfOutline.h"
#include "imaging/containers/page_choice.h"
#include "imaging/containers/pdf_head.h"
#include "imaging/containers/pdf_page.h"
#include "imaging/containers/pdf_reading.h"

namespace orvane {
namespace {

// Writes the kept pages one behind another under new object numbers. The streams are copied.
class PageCopy {
 public:
  PageCopy(const OutputFile& source, OutputFile& target, const std::string& documentId)
      : source_(source), target_(target), outline_(PdfOutline::empty(documentId)) {
    put(0, pdfHead().text);
  }

  void add(const PdfPagePlace& place) {
    const PdfPageSize size = readPdfPageSize(source_, place);
    if (outline_.isGroupFull()) {
      const std::uint64_t at = outline_.end;
      put(at, outline_.closeGroup());
    }
    const PdfPageNumbers numbers = outline_.next();
    const std::uint64_t image = outline_.end;
    const std::uint64_t content =
        copyObject(place.numbers.image, place.image, place.content, numbers.image, image);
    const std::uint64_t page =
        copyObject(place.numbers.content, place.content, place.page, numbers.content, content);
    const std::uint64_t end =
        put(page, beginPdfObject(numbers.page) + pdfPageDictionary(numbers, size) + kEndPdfObject);
    outline_.addPage(image, content, page, end);
  }

  void finish() { put(outline_.end, outline_.tail()); }

 private:
  std::uint64_t put(std::uint64_t offset, const std::string& text) {
    target_.write(offset,
                  ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    return offset + text.size();
  }

  // The object that fills `from` to `fromEnd`; answers where its copy ends.
  std::uint64_t copyObject(std::uint32_t oldNumber, std::uint64_t from, std::uint64_t fromEnd,
                           std::uint32_t newNumber, std::uint64_t to) {
    requirePdfObject(source_, oldNumber, from, fromEnd);
    const std::uint64_t body = from + beginPdfObject(oldNumber).size();
    const std::uint64_t at = put(to, beginPdfObject(newNumber));
    target_.copy(source_, body, fromEnd - body, at);
    return at + (fromEnd - body);
  }

  const OutputFile& source_;
  OutputFile& target_;
  PdfOutline outline_;
};

}  // namespace

void PdfFile::deletePage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  const PdfOutline outline = readPdfOutline(file);
  requireDeletablePage(path, page, outline.pages());
  std::vector<PdfPagePlace> pages = readPdfPages(file, outline);
  pages.erase(pages.begin() + (page - 1));

  ReplacementFile replacement(file);
  PageCopy copy(file, replacement.file(), outline.documentId);
  for (const PdfPagePlace& place : pages) copy.add(place);
  copy.finish();
  replacement.commit();
}

}  // namespace orvane
