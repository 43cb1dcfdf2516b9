#include "imaging/pdf/PdfLayout.h"

#include <algorithm>
#include <utility>

#include "imaging/pdf/Fingerprint.h"
#include "imaging/pdf/pdf_head.h"

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

std::string kids(const std::vector<std::uint32_t>& objects) {
  std::string list = "/Kids [";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    list += (i % kReferencesPerLine == 0 ? '\n' : ' ') + pdfReference(objects[i]);
  }
  return list + " ]";
}

}  // namespace

PdfOutline PdfOutline::empty(std::string documentId) {
  PdfOutline outline;
  outline.documentId = std::move(documentId);
  outline.leaves = {kPdfFirstPageObject};
  outline.end = pdfHead().text.size();
  return outline;
}

std::uint32_t PdfOutline::nextObject() const {
  return leaves.back() + 1 + static_cast<std::uint32_t>(entries.size() / kEntryBytes);
}

std::uint32_t PdfOutline::profileObject(const std::string& fingerprint) const {
  const auto found = std::ranges::find(profiles, fingerprint, &PdfProfile::fingerprint);
  return found == profiles.end() ? 0 : found->object;
}

PdfPageNumbers PdfOutline::next(bool bringsProfile) const {
  const std::uint32_t first = nextObject();
  const std::uint32_t image = first + (bringsProfile ? 1 : 0);
  return {leaves.back(), bringsProfile ? first : 0, image, image + 1, image + 2};
}

std::string PdfOutline::entry(std::uint64_t offset) {
  const std::string digits = std::to_string(offset);
  return std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
}

void PdfOutline::addPage(const PdfPageNumbers& numbers, const PdfPageOffsets& at,
                         std::uint64_t endOfPage) {
  if (numbers.profile != 0) entries += entry(at.profile);
  entries += entry(at.image) + entry(at.content) + entry(at.page);
  pageObjects.push_back(numbers.page);
  end = endOfPage;
}

std::string PdfOutline::leaf() const {
  return beginPdfObject(leaves.back()) + "<< /Type /Pages /Parent " + pdfReference(kPdfRootPages) +
         " /Count " + std::to_string(pageObjects.size()) + "\n" + kids(pageObjects) + " >>" +
         kEndPdfObject;
}

std::string PdfOutline::root() const {
  return beginPdfObject(kPdfRootPages) + "<< /Type /Pages /Count " + std::to_string(pages()) +
         "\n" + kids(leaves) + " >>" + kEndPdfObject;
}

// The first half of the ID names the document for good, the second one this state of it.
std::string PdfOutline::trailer() const {
  Fingerprint state;
  state.add(documentId);
  state.add(std::to_string(pages()));
  const std::string previous = closedSection == 0 ? "" : " /Prev " + std::to_string(closedSection);
  return "trailer\n<< /Size " + std::to_string(nextObject()) + " /Root " +
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
      closedGroups() == 0
          ? subsection(0, headEntries() + rootEntry + groupEntries)
          : subsection(kPdfRootPages, rootEntry) + subsection(leaves.back(), groupEntries);
  return leafText + rootText + "xref\n" + section + trailer() + "startxref\n" +
         std::to_string(rootOffset + rootText.size()) + "\n%%EOF\n";
}

// The root of the page tree is left to the last section: it changes with every page.
std::string PdfOutline::closedSectionText() const {
  const std::string head = closedGroups() == 0 ? subsection(0, headEntries()) : "";
  return "xref\n" + head + subsection(leaves.back(), entry(end) + entries) + trailer();
}

std::string PdfOutline::closeGroup() {
  const std::string leafText = leaf();
  std::string text = leafText + closedSectionText();
  closedSection = end + leafText.size();
  end += text.size();
  leaves.push_back(nextObject());
  entries.clear();
  pageObjects.clear();
  return text;
}

}  // namespace orvane
