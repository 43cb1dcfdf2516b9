#include "imaging/pdf/pdf_reading.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "imaging/pdf/pdf_head.h"

namespace orvane {
namespace {

// More than the longest of each can be.
constexpr std::uint64_t kLongestTail = 32'768;
constexpr std::uint64_t kLongestClosedSection = 16'384;
constexpr std::uint64_t kLongestLeaf = 2'048;
constexpr std::uint64_t kLongestPageObject = 512;
constexpr std::uint64_t kLongestImageFront = 4'096;
constexpr std::uint64_t kLongestProfileObject = (std::uint64_t{4} << 20) + 256;
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

// The object numbers of a list "/Kids [ 8 0 R 11 0 R ]".
std::vector<std::uint32_t> kidsIn(std::string_view text) {
  std::string_view list = behind(text, "/Kids [");
  list = list.substr(0, list.find(']'));
  std::vector<std::uint32_t> kids;
  for (std::size_t end = list.find(" 0 R"); end != list.npos; end = list.find(" 0 R")) {
    const std::optional<std::uint64_t> kid = number(list.substr(1, end - 1));
    kids.push_back(static_cast<std::uint32_t>(kid.value_or(0)));
    list.remove_prefix(end + 4);
  }
  return kids;
}

// Three objects a page, or four with a profile, and an entry for each of them.
bool isGroup(const PdfOutline& group) {
  if (group.pageObjects.empty() || group.pageObjects.size() > PdfOutline::kPagesPerGroup) {
    return false;
  }
  std::uint32_t last = group.leaves.back();
  for (const std::uint32_t page : group.pageObjects) {
    const std::uint32_t objects = page - last;
    if (objects != PdfOutline::kObjectsPerPage && objects != PdfOutline::kObjectsPerPage + 1) {
      return false;
    }
    last = page;
  }
  return group.nextObject() == last + 1 && areEntries(group.entries);
}

// The group whose leaf of the page tree and whose cross-reference section, with the trailer, are
// given. What is read of them is only found here, not yet believed.
std::optional<PdfOutline> findGroup(std::string_view leaf, std::string_view section,
                                    std::vector<std::uint32_t> leaves) {
  PdfOutline group;
  group.leaves = std::move(leaves);
  group.pageObjects = kidsIn(leaf);
  const std::size_t trailerAt = section.find("trailer\n");
  if (trailerAt == section.npos || group.pageObjects.empty()) return std::nullopt;
  const std::uint32_t objects = group.pageObjects.back() - group.leaves.back();
  const std::uint64_t entryBytes = std::uint64_t{objects} * PdfOutline::kEntryBytes;
  if (entryBytes > trailerAt) return std::nullopt;
  group.entries = section.substr(trailerAt - entryBytes, entryBytes);
  const std::string_view trailer =
      section.substr(trailerAt, section.find(">>\n", trailerAt) - trailerAt);
  group.documentId = behind(trailer, "/ID [ <").substr(0, kIdDigits);
  group.closedSection = numberBehind(trailer, "/Prev ").value_or(0);
  return isGroup(group) ? std::optional(group) : std::nullopt;
}

// Where the last object of that number in front of `end` begins.
std::size_t findObject(std::string_view text, std::uint32_t object, std::size_t end) {
  const std::size_t found = text.substr(0, end).rfind('\n' + beginPdfObject(object));
  return found == text.npos ? found : found + 1;
}

void appendPlaces(const PdfOutline& group, std::vector<PdfPagePlace>& places) {
  const std::uint32_t leaf = group.leaves.back();
  const auto placeOf = [&](std::uint32_t object) {
    return object == 0 ? 0 : offsetOf(group.entries, object - leaf - 1);
  };
  std::uint32_t last = leaf;
  for (const std::uint32_t page : group.pageObjects) {
    const std::uint32_t profile = page - last > PdfOutline::kObjectsPerPage ? last + 1 : 0;
    places.push_back({{leaf, profile, page - 2, page - 1, page},
                      {placeOf(profile), placeOf(page - 2), placeOf(page - 1), placeOf(page)}});
    last = page;
  }
}

// The closed group in front of `later`: its leaf is right in front of its section.
PdfOutline readClosedGroup(const OutputFile& file, const PdfOutline& later) {
  const std::uint64_t from = later.closedSection - std::min(later.closedSection, kLongestLeaf);
  const std::string text = readUpTo(file, from, kLongestLeaf + kLongestClosedSection);
  const std::string_view all = text;
  const std::uint64_t sectionAt = later.closedSection - from;
  const std::vector<std::uint32_t> leaves(later.leaves.begin(), later.leaves.end() - 1);
  const std::size_t leafAt = findObject(all, leaves.back(), sectionAt);
  if (sectionAt > all.size() || leafAt == all.npos) throw foreign(file);

  std::optional<PdfOutline> group =
      findGroup(all.substr(leafAt, sectionAt - leafAt), all.substr(sectionAt), leaves);
  if (!group || !group->isGroupFull() || group->documentId != later.documentId) {
    throw foreign(file);
  }
  group->end = from + leafAt;
  PdfOutline closed = *group;
  if (!all.substr(leafAt).starts_with(closed.closeGroup()) || closed.leaves != later.leaves ||
      closed.closedSection != later.closedSection) {
    throw foreign(file);
  }
  return *group;
}

// The fingerprint of the profile that a page brings along.
std::string readProfile(const OutputFile& file, const PdfPagePlace& place) {
  const std::uint64_t length = place.at.image - place.at.profile;
  if (length > kLongestProfileObject) throw foreign(file);
  const std::string text = readText(file, place.at.profile, length);
  const std::string begin = beginPdfObject(place.numbers.profile);
  const std::string end = std::string(kEndPdfStream) + kEndPdfObject;
  const std::size_t streamAt = text.find(kBeginPdfStream);
  if (streamAt == text.npos) throw foreign(file);
  const std::size_t contentAt = streamAt + std::string_view(kBeginPdfStream).size();
  const std::string content =
      text.substr(contentAt, text.size() - std::min(text.size(), contentAt + end.size()));
  const int colours = text.find("/N 1 ") < streamAt ? 1 : 3;
  const std::string dictionary = pdfProfileDictionary(colours, content.size());
  if (text != begin + dictionary + kBeginPdfStream + content + end) throw foreign(file);
  return pdfProfileFingerprint(
      dictionary, ByteView(reinterpret_cast<const std::uint8_t*>(content.data()), content.size()));
}

}  // namespace

PdfOutline readPdfOutline(const OutputFile& file) {
  const std::string& head = pdfHead().text;
  const std::uint64_t size = file.size();
  if (size <= head.size() || readText(file, 0, head.size()) != head) throw foreign(file);

  const std::uint64_t length = std::min(size, kLongestTail);
  const std::string text = readText(file, size - length, length);
  const std::string_view window = text;
  const std::size_t sectionAt = window.rfind("xref\n", window.rfind("startxref\n") - 1);
  const std::size_t rootAt = findObject(window, kPdfRootPages, sectionAt);
  if (sectionAt == window.npos || rootAt == window.npos) throw foreign(file);
  const std::vector<std::uint32_t> leaves = kidsIn(window.substr(rootAt, sectionAt - rootAt));
  if (leaves.empty() || leaves.size() > PdfOutline::kMostGroups ||
      leaves.front() != kPdfFirstPageObject || leaves.back() > PdfOutline::kMostObjects) {
    throw foreign(file);
  }
  const std::size_t leafAt = findObject(window, leaves.back(), rootAt);
  if (leafAt == window.npos) throw foreign(file);

  std::optional<PdfOutline> outline =
      findGroup(window.substr(leafAt, rootAt - leafAt), window.substr(sectionAt), leaves);
  if (!outline) throw foreign(file);
  outline->end = size - length + leafAt;
  if (window.substr(leafAt) != outline->tail()) throw foreign(file);
  return *outline;
}

std::vector<PdfPagePlace> readPdfPages(const OutputFile& file, const PdfOutline& outline) {
  std::vector<PdfOutline> groups{outline};
  while (groups.back().closedGroups() != 0) {
    groups.push_back(readClosedGroup(file, groups.back()));
  }
  std::vector<PdfPagePlace> places;
  std::for_each(groups.rbegin(), groups.rend(),
                [&](const PdfOutline& group) { appendPlaces(group, places); });
  std::uint64_t last = pdfHead().text.size() - 1;
  for (const PdfPagePlace& place : places) {
    if (place.begin() <= last) throw foreign(file);
    last = place.at.page;
  }
  if (last >= outline.end) throw foreign(file);
  return places;
}

std::vector<PdfProfile> readPdfProfiles(const OutputFile& file, const PdfOutline& outline) {
  const std::size_t others =
      outline.leaves.size() + std::size_t{outline.pages()} * PdfOutline::kObjectsPerPage;
  std::vector<PdfProfile> profiles;
  if (outline.nextObject() - kPdfFirstPageObject == others) return profiles;
  for (const PdfPagePlace& place : readPdfPages(file, outline)) {
    if (place.numbers.profile == 0) continue;
    profiles.push_back({readProfile(file, place), place.numbers.profile});
  }
  return profiles;
}

std::string readPdfImageDictionary(const OutputFile& file, const PdfPagePlace& place) {
  const std::uint64_t length = place.at.content - place.at.image;
  const std::string text = readUpTo(file, place.at.image, std::min(length, kLongestImageFront));
  const std::string begin = beginPdfObject(place.numbers.image);
  const std::size_t streamAt = text.find(kBeginPdfStream);
  if (!text.starts_with(begin) || streamAt == text.npos) throw foreign(file);
  return text.substr(begin.size(), streamAt - begin.size());
}

PdfPageSize readPdfPageSize(const OutputFile& file, const PdfPagePlace& place) {
  const std::string text = readUpTo(file, place.at.page, kLongestPageObject);
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
