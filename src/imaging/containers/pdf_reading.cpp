#include "imaging/containers/pdf_reading.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/containers/pdf_head.h"

namespace orvane {
namespace {

// More than the longest tail, a closed section or a page object can be.
constexpr std::uint64_t kLongestTail = 32'768;
constexpr std::uint64_t kLongestClosedSection = 8'192;
constexpr std::uint64_t kLongestPageObject = 512;
constexpr std::size_t kIdDigits = 32;
constexpr std::size_t kOffsetDigits = 10;

Failure foreign(const OutputFile& file) {
  return fileFailure(file.path(), "not a PDF file that this program wrote, or a damaged one");
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
  if (result.ec != std::errc() || value > PdfOutline::kMostBytes) return std::nullopt;
  return value;
}

std::string_view behind(std::string_view text, std::string_view key) {
  const std::size_t found = text.find(key);
  return found == std::string_view::npos ? "" : text.substr(found + key.size());
}

std::optional<std::uint64_t> numberBehind(std::string_view text, std::string_view key) {
  return number(behind(text, key));
}

std::uint64_t offsetOf(std::string_view entries, std::size_t index) {
  return number(entries.substr(index * PdfOutline::kEntryBytes, kOffsetDigits)).value_or(0);
}

// Every entry in its form, with offsets that grow from page to page.
bool areEntries(std::string_view entries) {
  std::uint64_t last = 0;
  for (std::size_t i = 0; i < entries.size() / PdfOutline::kEntryBytes; ++i) {
    const std::uint64_t offset = offsetOf(entries, i);
    const std::string_view text =
        entries.substr(i * PdfOutline::kEntryBytes, PdfOutline::kEntryBytes);
    if (offset <= last || text != PdfOutline::entry(offset)) return false;
    last = offset;
  }
  return true;
}

struct ReadSection {
  PdfOutline outline;      // without `end`
  std::uint64_t leaf = 0;  // where the group's leaf stands
};

// A cross-reference section and its trailer. The numbers are only found here, not yet believed.
std::optional<ReadSection> findSection(std::string_view text) {
  const std::size_t trailerAt = text.find("trailer\n");
  if (trailerAt == std::string_view::npos) return std::nullopt;
  const std::string_view trailer = text.substr(trailerAt, text.find(">>\n", trailerAt) - trailerAt);
  const std::optional<std::uint64_t> size = numberBehind(trailer, "/Size ");
  if (!size || *size <= kPdfFirstPageObject) return std::nullopt;

  const std::uint64_t objects = *size - kPdfFirstPageObject - 1;
  const std::uint64_t groups = objects / PdfOutline::kObjectsPerGroup;
  const std::size_t entryBytes = objects % PdfOutline::kObjectsPerGroup * PdfOutline::kEntryBytes;
  const std::size_t rowBytes = entryBytes + PdfOutline::kEntryBytes;
  if (groups > PdfOutline::kMostPages / PdfOutline::kPagesPerGroup || entryBytes == 0 ||
      rowBytes > trailerAt) {
    return std::nullopt;
  }
  const std::string_view row = text.substr(trailerAt - rowBytes, rowBytes);
  if (!areEntries(row.substr(PdfOutline::kEntryBytes))) return std::nullopt;
  ReadSection section;
  section.leaf = offsetOf(row, 0);
  section.outline.documentId = behind(trailer, "/ID [ <").substr(0, kIdDigits);
  section.outline.closedGroups = static_cast<std::uint32_t>(groups);
  section.outline.closedSection = numberBehind(trailer, "/Prev ").value_or(0);
  section.outline.entries = row.substr(PdfOutline::kEntryBytes);
  return section;
}

// The tail of the file and the offset at which it was read.
struct Window {
  std::string text;
  std::uint64_t offset;
  std::string_view from(std::uint64_t at) const {
    if (at < offset || at - offset > text.size()) return "";
    return std::string_view(text).substr(at - offset);
  }
};

Window readWindow(const OutputFile& file) {
  const std::uint64_t size = file.size();
  const std::uint64_t length = std::min(size, kLongestTail);
  return {readText(file, size - length, length), size - length};
}

void appendPlaces(const PdfOutline& group, std::vector<PdfPagePlace>& places) {
  for (std::uint32_t i = 0; i < group.pagesInGroup(); ++i) {
    const std::size_t first = std::size_t{i} * PdfOutline::kObjectsPerPage;
    places.push_back({PdfOutline::numbers(group.closedGroups, i), offsetOf(group.entries, first),
                      offsetOf(group.entries, first + 1), offsetOf(group.entries, first + 2)});
  }
}

// The closed group in front of `later`.
PdfOutline readClosedGroup(const OutputFile& file, const PdfOutline& later) {
  const std::string text = readUpTo(file, later.closedSection, kLongestClosedSection);
  const std::optional<ReadSection> section = findSection(text);
  if (!section || section->outline.closedGroups + 1 != later.closedGroups ||
      section->outline.documentId != later.documentId ||
      !text.starts_with(section->outline.closedSectionText(section->leaf))) {
    throw foreign(file);
  }
  return section->outline;
}

}  // namespace

PdfOutline readPdfOutline(const OutputFile& file) {
  const std::string& head = pdfHead().text;
  if (file.size() <= head.size() || readText(file, 0, head.size()) != head) throw foreign(file);

  const Window window = readWindow(file);
  const std::size_t startAt = window.text.rfind("startxref\n");
  if (startAt == std::string::npos) throw foreign(file);
  const std::optional<std::uint64_t> sectionAt =
      numberBehind(std::string_view(window.text).substr(startAt), "startxref\n");
  std::optional<ReadSection> section = findSection(window.from(sectionAt.value_or(0)));
  if (!section) throw foreign(file);
  section->outline.end = section->leaf;
  if (window.from(section->leaf) != section->outline.tail()) throw foreign(file);
  return section->outline;
}

std::vector<PdfPagePlace> readPdfPages(const OutputFile& file, const PdfOutline& outline) {
  std::vector<PdfOutline> groups{outline};
  while (groups.back().closedGroups != 0) {
    groups.push_back(readClosedGroup(file, groups.back()));
  }
  std::vector<PdfPagePlace> places;
  std::for_each(groups.rbegin(), groups.rend(),
                [&](const PdfOutline& group) { appendPlaces(group, places); });
  std::uint64_t last = pdfHead().text.size() - 1;
  for (const PdfPagePlace& place : places) {
    if (place.image <= last || place.content <= place.image || place.page <= place.content) {
      throw foreign(file);
    }
    last = place.page;
  }
  if (last >= outline.end) throw foreign(file);
  return places;
}

PdfPageSize readPdfPageSize(const OutputFile& file, const PdfPagePlace& place) {
  const std::string text = readUpTo(file, place.page, kLongestPageObject);
  const std::string_view box = behind(text, "/MediaBox [ 0 0 ");
  const std::size_t blank = box.find(' ');
  if (blank == std::string_view::npos) throw foreign(file);
  const std::string_view height = box.substr(blank + 1);
  PdfPageSize size{std::string(box.substr(0, blank)),
                   std::string(height.substr(0, height.find(' ')))};
  if (!text.starts_with(beginPdfObject(place.numbers.page) +
                        pdfPageDictionary(place.numbers, size) + kEndPdfObject)) {
    throw foreign(file);
  }
  return size;
}

void requirePdfObject(const OutputFile& file, std::uint32_t number, std::uint64_t from,
                      std::uint64_t end) {
  const std::string begin = beginPdfObject(number);
  const std::string_view close = kEndPdfObject;
  if (end < from + begin.size() + close.size() || readText(file, from, begin.size()) != begin ||
      readText(file, end - close.size(), close.size()) != close) {
    throw foreign(file);
  }
}

}  // namespace orvane
