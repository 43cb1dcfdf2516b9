#include "imaging/pdf/pdf_reading.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {
namespace {

// No text that this program writes is longer.
constexpr std::uint64_t kLongestTail = 32'768;
constexpr std::uint64_t kLongestClosedSection = 16'384;
constexpr std::uint64_t kLongestLeaf = 2'048;
constexpr std::uint64_t kLongestPageObject = 512;
constexpr std::uint64_t kLongestImageFront = 4'096;
constexpr std::uint64_t kLongestProfileObject = (std::uint64_t{4} << 20) + 256;
constexpr std::size_t kIdDigits = 32;
constexpr std::size_t kOffsetDigits = 10;

/// The file is not exactly as this program writes it.
class ForeignFile : public Failure {
 public:
  using Failure::Failure;
};

ForeignFile foreign(const OutputFile& file) {
  return ForeignFile(
      fileFailure(file.path(), "not a PDF file that this program wrote, or a damaged one").what());
}

std::string readText(const OutputFile& file, std::uint64_t offset, std::uint64_t length) {
  std::string text(length, '\0');
  file.read(offset, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()});
  return text;
}

// As much as the file holds from `offset` on, at most `length`.
std::string readUpTo(const OutputFile& file, std::uint64_t offset, std::uint64_t length) {
  const std::uint64_t size = file.size();
  if (offset >= size) throw foreign(file);
  return readText(file, offset, std::min(length, size - offset));
}

std::optional<std::uint64_t> number(std::string_view digits) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec != std::errc() || value > PdfLayout::kMostBytes) return std::nullopt;
  return value;
}

std::string_view after(std::string_view text, std::string_view key) {
  const std::size_t found = text.find(key);
  return found == std::string_view::npos ? "" : text.substr(found + key.size());
}

std::uint64_t offsetOf(std::string_view entries, std::size_t index) {
  return number(entries.substr(index * PdfLayout::kEntryBytes, kOffsetDigits)).value_or(0);
}

// True when every entry is well formed and the offsets increase.
bool areEntries(std::string_view entries) {
  std::uint64_t last = 0;
  for (std::size_t i = 0; i < entries.size() / PdfLayout::kEntryBytes; ++i) {
    const std::uint64_t offset = offsetOf(entries, i);
    const std::string_view text =
        entries.substr(i * PdfLayout::kEntryBytes, PdfLayout::kEntryBytes);
    if (offset <= last || text != PdfLayout::entry(offset)) return false;
    last = offset;
  }
  return true;
}

// The object numbers in "/Kids [ 8 0 R 11 0 R ]".
std::vector<std::uint32_t> kidsIn(std::string_view text) {
  std::string_view list = after(text, "/Kids [");
  list = list.substr(0, list.find(']'));
  std::vector<std::uint32_t> kids;
  for (std::size_t end = list.find(" 0 R"); end != list.npos; end = list.find(" 0 R")) {
    const std::optional<std::uint64_t> kid = number(list.substr(1, end - 1));
    kids.push_back(static_cast<std::uint32_t>(kid.value_or(0)));
    list.remove_prefix(end + 4);
  }
  return kids;
}

// True when each page has three objects, or four with a profile, and each object an entry.
bool isGroup(const PdfLayout& group) {
  if (group.pageObjects.empty() || group.pageObjects.size() > PdfLayout::kPagesPerGroup) {
    return false;
  }
  std::uint32_t last = group.leaves.back();
  for (const std::uint32_t page : group.pageObjects) {
    const std::uint32_t objects = page - last;
    if (objects != PdfLayout::kObjectsPerPage && objects != PdfLayout::kObjectsPerPage + 1) {
      return false;
    }
    last = page;
  }
  return group.nextObject() == last + 1 && areEntries(group.entries);
}

// The position of the last object of that number before `end`.
std::size_t findObject(const OutputFile& file, std::string_view text, std::uint32_t object,
                       std::size_t end) {
  const std::size_t found = text.substr(0, end).rfind('\n' + beginPdfObject(object));
  if (found == text.npos) throw foreign(file);
  return found + 1;
}

// The group with the given leaf of the page tree and cross-reference section, which includes the
// trailer. The caller compares the text that this group gives with the file.
PdfLayout findGroup(const OutputFile& file, std::string_view leaf, std::string_view section,
                    std::vector<std::uint32_t> leaves) {
  PdfLayout group;
  group.leaves = std::move(leaves);
  group.pageObjects = kidsIn(leaf);
  const std::size_t trailerAt = section.find("trailer\n");
  if (trailerAt == section.npos || group.pageObjects.empty()) throw foreign(file);
  const std::uint32_t objects = group.pageObjects.back() - group.leaves.back();
  const std::uint64_t entryBytes = std::uint64_t{objects} * PdfLayout::kEntryBytes;
  if (entryBytes > trailerAt) throw foreign(file);
  group.entries = section.substr(trailerAt - entryBytes, entryBytes);
  const std::string_view trailer =
      section.substr(trailerAt, section.find(">>\n", trailerAt) - trailerAt);
  group.documentId = after(trailer, "/ID [ <").substr(0, kIdDigits);
  group.closedSection = number(after(trailer, "/Prev ")).value_or(0);
  if (!isGroup(group)) throw foreign(file);
  return group;
}

void appendPlaces(const PdfLayout& group, std::vector<PdfPagePlace>& places) {
  const std::uint32_t leaf = group.leaves.back();
  const auto offsetOfObject = [&](std::uint32_t object) {
    return offsetOf(group.entries, object - leaf - 1);
  };
  std::uint32_t last = leaf;
  for (const std::uint32_t page : group.pageObjects) {
    const bool hasProfile = page - last > PdfLayout::kObjectsPerPage;
    places.push_back({leaf, page, hasProfile ? offsetOfObject(page - 3) : 0,
                      offsetOfObject(page - 2), offsetOfObject(page - 1), offsetOfObject(page)});
    last = page;
  }
}

// The closed group before `later`. Its leaf is stored directly before its section.
PdfLayout readClosedGroup(const OutputFile& file, const PdfLayout& later) {
  const std::uint64_t from = later.closedSection - std::min(later.closedSection, kLongestLeaf);
  const std::string text = readUpTo(file, from, kLongestLeaf + kLongestClosedSection);
  const std::string_view all = text;
  const std::uint64_t sectionAt = later.closedSection - from;
  const std::vector<std::uint32_t> leaves(later.leaves.begin(), later.leaves.end() - 1);
  if (sectionAt > all.size()) throw foreign(file);
  const std::size_t leafAt = findObject(file, all, leaves.back(), sectionAt);

  PdfLayout group =
      findGroup(file, all.substr(leafAt, sectionAt - leafAt), all.substr(sectionAt), leaves);
  if (!group.isGroupFull() || group.documentId != later.documentId) throw foreign(file);
  group.end = from + leafAt;
  PdfLayout closed = group;
  if (!all.substr(leafAt).starts_with(closed.closeGroup()) || closed.leaves != later.leaves ||
      closed.closedSection != later.closedSection) {
    throw foreign(file);
  }
  return group;
}

// The profile that a page brings. Its object, too, must be exactly what this program writes.
PdfStoredProfile readProfile(const OutputFile& file, const PdfPagePlace& place) {
  const std::uint64_t length = place.imageAt - place.profileAt;
  if (length > kLongestProfileObject) throw foreign(file);
  const std::string text = readText(file, place.profileAt, length);
  const std::string end = std::string(kEndPdfStream) + kEndPdfObject;
  const std::size_t streamAt = text.find(kBeginPdfStream);
  if (streamAt == text.npos) throw foreign(file);
  const std::size_t contentAt = streamAt + std::string_view(kBeginPdfStream).size();
  const std::string content =
      text.substr(contentAt, text.size() - std::min(text.size(), contentAt + end.size()));
  const int colours = text.find("/N 1 ") < streamAt ? 1 : 3;
  const std::string dictionary = pdfProfileDictionary(colours, content.size());
  if (text != beginPdfObject(place.profile()) + dictionary + kBeginPdfStream + content + end) {
    throw foreign(file);
  }
  return {PdfFingerprint().add(dictionary).add(content).hex(), place.profile()};
}

PdfLayout readPdfLayout(const OutputFile& file) {
  const std::string& head = pdfHead().text;
  const std::uint64_t size = file.size();
  if (size <= head.size() || readText(file, 0, head.size()) != head) throw foreign(file);

  const std::uint64_t length = std::min(size, kLongestTail);
  const std::string text = readText(file, size - length, length);
  const std::string_view window = text;
  const std::size_t sectionAt = window.rfind("xref\n", window.rfind("startxref\n") - 1);
  if (sectionAt == window.npos) throw foreign(file);
  const std::size_t rootAt = findObject(file, window, kPdfRootPages, sectionAt);
  const std::vector<std::uint32_t> leaves = kidsIn(window.substr(rootAt, sectionAt - rootAt));
  if (leaves.empty() || leaves.size() > PdfLayout::kMostGroups ||
      leaves.front() != kPdfFirstPageObject || leaves.back() > PdfLayout::kMostObjects) {
    throw foreign(file);
  }
  const std::size_t leafAt = findObject(file, window, leaves.back(), rootAt);

  PdfLayout layout =
      findGroup(file, window.substr(leafAt, rootAt - leafAt), window.substr(sectionAt), leaves);
  layout.end = size - length + leafAt;
  if (window.substr(leafAt) != layout.tail()) throw foreign(file);
  return layout;
}

}  // namespace

std::optional<PdfLayout> readOwnPdfLayout(const OutputFile& file) {
  try {
    return readPdfLayout(file);
  } catch (const ForeignFile&) {
    return std::nullopt;
  }
}

std::vector<PdfPagePlace> readPdfPages(const OutputFile& file, const PdfLayout& layout) {
  std::vector<PdfLayout> groups{layout};
  while (groups.back().closedGroups() != 0) {
    groups.push_back(readClosedGroup(file, groups.back()));
  }
  std::vector<PdfPagePlace> places;
  std::for_each(groups.rbegin(), groups.rend(),
                [&](const PdfLayout& group) { appendPlaces(group, places); });
  std::uint64_t last = pdfHead().text.size() - 1;
  for (const PdfPagePlace& place : places) {
    if (place.begin() <= last) throw foreign(file);
    last = place.pageAt;
  }
  if (last >= layout.end) throw foreign(file);
  return places;
}

PdfLayout readPdfLayoutToAppend(const OutputFile& file) {
  PdfLayout layout = readPdfLayout(file);
  const std::size_t otherObjects =
      layout.leaves.size() + std::size_t{layout.pages()} * PdfLayout::kObjectsPerPage;
  if (layout.nextObject() - kPdfFirstPageObject == otherObjects) return layout;
  for (const PdfPagePlace& place : readPdfPages(file, layout)) {
    if (place.hasProfile()) layout.profiles.push_back(readProfile(file, place));
  }
  return layout;
}

std::string readPdfImageDictionary(const OutputFile& file, const PdfPagePlace& place) {
  const std::uint64_t length = place.contentAt - place.imageAt;
  const std::string text = readUpTo(file, place.imageAt, std::min(length, kLongestImageFront));
  const std::string begin = beginPdfObject(place.image());
  const std::size_t streamAt = text.find(kBeginPdfStream);
  if (!text.starts_with(begin) || streamAt == text.npos) throw foreign(file);
  return text.substr(begin.size(), streamAt - begin.size());
}

PdfPageSize readPdfPageSize(const OutputFile& file, const PdfPagePlace& place) {
  const std::string text = readUpTo(file, place.pageAt, kLongestPageObject);
  const std::string_view box = after(text, "/MediaBox [ 0 0 ");
  const std::size_t blank = box.find(' ');
  if (blank == std::string_view::npos) throw foreign(file);
  const std::string_view height = box.substr(blank + 1);
  PdfPageSize size{std::string(box.substr(0, blank)),
                   std::string(height.substr(0, height.find(' ')))};
  if (!text.starts_with(beginPdfObject(place.page) +
                        pdfPageDictionary(place.leaf, place.page, size) + kEndPdfObject)) {
    throw foreign(file);
  }
  return size;
}

void requirePdfObject(const OutputFile& file, std::uint32_t number, std::uint64_t begin,
                      std::uint64_t end) {
  const std::string open = beginPdfObject(number);
  const std::string_view close = kEndPdfObject;
  if (end < begin + open.size() + close.size() || readText(file, begin, open.size()) != open ||
      readText(file, end - close.size(), close.size()) != close) {
    throw foreign(file);
  }
}

}  // namespace orvane
