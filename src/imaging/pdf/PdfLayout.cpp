#include "imaging/pdf/PdfLayout.h"

#include <algorithm>
#include <utility>

#include "imaging/pdf/pdf_objects.h"

namespace orvane {
namespace {

constexpr std::uint32_t kReferencesPerLine = 8;
constexpr char kFreeEntry[] = "0000000000 65535 f \n";

// The subsection of a cross-reference section for objects with consecutive numbers.
std::string subsection(std::uint32_t first, const std::string& entries) {
  return std::to_string(first) + " " + std::to_string(entries.size() / PdfLayout::kEntryBytes) +
         "\n" + entries;
}

std::string headEntries() {
  std::string entries = kFreeEntry;
  for (const std::uint64_t offset : pdfHead().offsets) entries += PdfLayout::entry(offset);
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

PdfLayout PdfLayout::empty(std::string documentId) {
  PdfLayout layout;
  layout.documentId = std::move(documentId);
  layout.leaves = {kPdfFirstPageObject};
  layout.end = pdfHead().text.size();
  return layout;
}

std::uint32_t PdfLayout::nextObject() const {
  return leaves.back() + 1 + static_cast<std::uint32_t>(entries.size() / kEntryBytes);
}

std::uint32_t PdfLayout::profileObject(const std::string& fingerprint) const {
  const auto found = std::ranges::find(profiles, fingerprint, &PdfStoredProfile::fingerprint);
  return found == profiles.end() ? 0 : found->object;
}

// An offset over kMostBytes gives a longer entry; such a file is never written.
std::string PdfLayout::entry(std::uint64_t offset) {
  const std::string digits = std::to_string(offset);
  return std::string(10 - std::min<std::size_t>(digits.size(), 10), '0') + digits + " 00000 n \n";
}

std::uint64_t PdfLayout::place(std::uint64_t bytes) {
  const std::uint64_t offset = end;
  entries += entry(offset);
  end += bytes;
  return offset;
}

std::string PdfLayout::leaf() const {
  return beginPdfObject(leaves.back()) + "<< /Type /Pages /Parent " + pdfReference(kPdfRootPages) +
         " /Count " + std::to_string(pageObjects.size()) + "\n" + kids(pageObjects) + " >>" +
         kEndPdfObject;
}

std::string PdfLayout::root() const {
  return beginPdfObject(kPdfRootPages) + "<< /Type /Pages /Count " + std::to_string(pages()) +
         "\n" + kids(leaves) + " >>" + kEndPdfObject;
}

// The first half of the ID never changes, the second one identifies this state of the file.
std::string PdfLayout::trailer() const {
  const std::string state = PdfFingerprint().add(documentId).add(std::to_string(pages())).hex();
  const std::string previous = closedSection == 0 ? "" : " /Prev " + std::to_string(closedSection);
  return "trailer\n<< /Size " + std::to_string(nextObject()) + " /Root " +
         pdfReference(kPdfCatalog) + previous + "\n/ID [ <" + documentId + "> <" + state +
         "> ] >>\n";
}

std::string PdfLayout::tail() const {
  const std::string leafText = leaf();
  const std::string rootText = root();
  const std::uint64_t rootOffset = end + leafText.size();
  const std::string rootEntry = entry(rootOffset);
  const std::string groupEntries = entry(end) + entries;
  // While all pages are in one group the section is one subsection, as in a file written at once.
  const std::string section =
      closedGroups() == 0
          ? subsection(0, headEntries() + rootEntry + groupEntries)
          : subsection(kPdfRootPages, rootEntry) + subsection(leaves.back(), groupEntries);
  return leafText + rootText + "xref\n" + section + trailer() + "startxref\n" +
         std::to_string(rootOffset + rootText.size()) + "\n%%EOF\n";
}

// Only the last section has an entry for the root of the page tree, which changes with every page.
std::string PdfLayout::closedSectionText() const {
  const std::string head = closedGroups() == 0 ? subsection(0, headEntries()) : "";
  return "xref\n" + head + subsection(leaves.back(), entry(end) + entries) + trailer();
}

std::string PdfLayout::closeGroup() {
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
