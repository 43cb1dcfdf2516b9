#include "imaging/containers/PdfOutline.h"

#include <utility>

#include "imaging/containers/Fingerprint.h"
#include "imaging/containers/pdf_head.h"

namespace orvane {
namespace {

constexpr std::uint32_t kReferencesPerLine = 8;
constexpr char kFreeEntry[] = "0000000000 65535 f \n";

// "<first> <count>" and the entries of objects in a row.
std::string subsection(std::uint32_t first, const std::string& entries) {
  return std::to_string(first) + " " + std::to_string(entries.size() / PdfOutline::kEntryBytes) +
         "\n" + entries;
}

std::string headEntries() {
  std::string entries = kFreeEntry;
  for (const std::uint64_t offset : pdfHead().offsets) entries += PdfOutline::entry(offset);
  return entries;
}

// A reference for each of `count` objects, the first being `first`, each `step` numbers on.
std::string kids(std::uint32_t first, std::uint32_t step, std::uint32_t count) {
  std::string list = "/Kids [";
  for (std::uint32_t i = 0; i < count; ++i) {
    list += (i % kReferencesPerLine == 0 ? '\n' : ' ') + pdfReference(first + i * step);
  }
  return list + " ]";
}

}  // namespace

PdfOutline PdfOutline::empty(std::string documentId) {
  PdfOutline outline;
  outline.documentId = std::move(documentId);
  outline.end = pdfHead().text.size();
  return outline;
}

PdfPageNumbers PdfOutline::numbers(std::uint32_t group, std::uint32_t pageInGroup) {
  const std::uint32_t leaf = kPdfFirstPageObject + group * kObjectsPerGroup;
  const std::uint32_t image = leaf + 1 + pageInGroup * kObjectsPerPage;
  return {leaf, image, image + 1, image + 2};
}

std::string PdfOutline::entry(std::uint64_t offset) {
  const std::string digits = std::to_string(offset);
  return std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
}

std::uint32_t PdfOutline::pagesInGroup() const {
  return static_cast<std::uint32_t>(entries.size() / kEntryBytes / kObjectsPerPage);
}

void PdfOutline::addPage(std::uint64_t image, std::uint64_t content, std::uint64_t page,
                         std::uint64_t endOfPage) {
  entries += entry(image) + entry(content) + entry(page);
  end = endOfPage;
}

std::string PdfOutline::leaf() const {
  const PdfPageNumbers first = numbers(closedGroups, 0);
  return beginPdfObject(first.leaf) + "<< /Type /Pages /Parent " + pdfReference(kPdfRootPages) +
         " /Count " + std::to_string(pagesInGroup()) + "\n" +
         kids(first.page, kObjectsPerPage, pagesInGroup()) + " >>" + kEndPdfObject;
}

std::string PdfOutline::root() const {
  return beginPdfObject(kPdfRootPages) + "<< /Type /Pages /Count " + std::to_string(pages()) +
         "\n" + kids(kPdfFirstPageObject, kObjectsPerGroup, closedGroups + 1) + " >>" +
         kEndPdfObject;
}

// The first half of the ID names the document for good, the second one this state of it.
std::string PdfOutline::trailer() const {
  Fingerprint state;
  state.add(documentId);
  state.add(std::to_string(pages()));
  const std::string previous = closedSection == 0 ? "" : " /Prev " + std::to_string(closedSection);
  return "trailer\n<< /Size " + std::to_string(next().image) + " /Root " +
         pdfReference(kPdfCatalog) + previous + "\n/ID [ <" + documentId + "> <" + state.hex() +
         "> ] >>\n";
}

std::string PdfOutline::tail() const {
  const std::string leafText = leaf();
  const std::string rootText = root();
  const std::uint64_t rootOffset = end + leafText.size();
  const std::string rootEntry = entry(rootOffset);
  const std::string groupEntries = entry(end) + entries;
  // A file with one section has all its objects in one row, as a file that never grew.
  const std::string section =
      closedGroups == 0
          ? subsection(0, headEntries() + rootEntry + groupEntries)
          : subsection(kPdfRootPages, rootEntry) + subsection(next().leaf, groupEntries);
  return leafText + rootText + "xref\n" + section + trailer() + "startxref\n" +
         std::to_string(rootOffset + rootText.size()) + "\n%%EOF\n";
}

// The root of the page tree is left to the last section: it changes with every page.
std::string PdfOutline::closedSectionText(std::uint64_t leafOffset) const {
  const std::string head = closedGroups == 0 ? subsection(0, headEntries()) : "";
  return "xref\n" + head + subsection(next().leaf, entry(leafOffset) + entries) + trailer();
}

std::string PdfOutline::closeGroup() {
  const std::string leafText = leaf();
  std::string text = leafText + closedSectionText(end);
  closedSection = end + leafText.size();
  end += text.size();
  ++closedGroups;
  entries.clear();
  return text;
}

}  // namespace orvane
