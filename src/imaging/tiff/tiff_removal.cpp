#include "imaging/tiff/tiff_removal.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "foundation/durable_file.h"
#include "imaging/raster/page_choice.h"
#include "imaging/tiff/TiffFile.h"
#include "imaging/tiff/TiffForm.h"
#include "imaging/tiff/TiffStructure.h"

namespace orvane {
namespace {

std::uint64_t endOf(const Relocation::Range& range) {
  return range.from + range.length;
}

}  // namespace

void Relocation::keep(std::uint64_t from, std::uint64_t length) {
  if (length == 0) return;
  // A byte of padding between two strips is not worth a range of its own.
  if (!ranges_.empty()) {
    Range& last = ranges_.back();
    if (from >= last.from && from <= endOf(last) + 1) {
      last.length = std::max(endOf(last), from + length) - last.from;
      return;
    }
  }
  ranges_.push_back({from, length, 0});
}

void Relocation::arrange(std::uint64_t alignment) {
  std::vector<Range> marked;
  marked.swap(ranges_);
  std::ranges::sort(marked, {}, &Range::from);
  for (const Range& range : marked) keep(range.from, range.length);

  std::uint64_t end = 0;
  for (Range& range : ranges_) {
    const std::uint64_t gap = range.from - end;
    range.to = range.from - gap / alignment * alignment;
    end = range.to + range.length;
  }
}

std::optional<std::uint64_t> Relocation::moved(std::uint64_t offset) const {
  const auto next = std::ranges::upper_bound(ranges_, offset, {}, &Range::from);
  if (next == ranges_.begin()) return std::nullopt;
  const Range& range = *std::prev(next);
  if (offset >= endOf(range)) return std::nullopt;
  return range.to + (offset - range.from);
}

namespace {

// Far above any real document, and low enough that a hostile file costs neither minutes nor
// gigabytes: numbers looked at, and things remembered.
constexpr std::uint64_t kMostReferences = 32'000'000;
constexpr std::size_t kMostRemembered = 4'000'000;
constexpr std::uint64_t kListPiece = 65'536;

constexpr std::uint64_t kQuantisationTableBytes = 64;
constexpr std::uint64_t kHuffmanCounts = 16;

const TiffEntry* find(const std::vector<TiffEntry>& entries, std::uint16_t tag) {
  const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
  return found == entries.end() ? nullptr : &*found;
}

bool isOneOf(std::uint16_t type, std::initializer_list<TiffType> types) {
  return std::ranges::find(types, static_cast<TiffType>(type)) != types.end();
}

bool isWholeNumber(const TiffEntry& entry) {
  return isOneOf(entry.type,
                 {TiffType::Short, TiffType::Long, TiffType::Ifd, TiffType::Long8, TiffType::Ifd8});
}

bool leadsToDirectories(const TiffEntry& entry) {
  constexpr std::uint16_t kTags[] = {tag::kSubIfds, tag::kGlobalParametersIfd, tag::kExifIfd,
                                     tag::kGpsIfd, tag::kInteroperabilityIfd};
  return isOneOf(entry.type, {TiffType::Ifd, TiffType::Ifd8}) ||
         std::ranges::find(kTags, entry.tag) != std::end(kTags);
}

}  // namespace

TiffKeeper::TiffKeeper(const TiffStructure& structure, std::span<const TiffDirectoryPlace> pages)
    : structure_(structure), referencesLeft_(kMostReferences) {
  keep(0, structure.form().headerBytes());
  linkPages(pages);
  for (std::size_t i = 0; i < pages.size(); ++i) {
    numberPage(keepFields(pages[i]), i, pages.size());
  }
  keepSubdirectories();
  relocation_.arrange(structure.form().bigTiff ? 8 : 2);
}

void TiffKeeper::linkPages(std::span<const TiffDirectoryPlace> pages) {
  std::uint64_t link = structure_.form().firstLink();
  for (const TiffDirectoryPlace& page : pages) {
    addLink(link, page.offset);
    link = page.nextLink;
    seenDirectories_.insert(page.offset);
  }
  addLink(link, 0);
}

TiffKeeper::Entries TiffKeeper::keepFields(const TiffDirectoryPlace& place) {
  keep(place.offset, place.nextLink + structure_.form().offsetBytes() - place.offset);
  Entries entries = structure_.entries(place);
  for (const TiffEntry& entry : entries) {
    spend(1);
    if (entry.pointerAt == 0) continue;
    keep(entry.valueAt, entry.valueBytes());
    addLink(entry.pointerAt, entry.valueAt);
  }
  keepData(entries, tag::kStripOffsets, tag::kStripByteCounts);
  keepData(entries, tag::kTileOffsets, tag::kTileByteCounts);
  keepData(entries, tag::kJpegInterchangeFormat, tag::kJpegInterchangeFormatLength);
  keepJpegTables(entries, tag::kJpegQTables);
  keepJpegTables(entries, tag::kJpegDcTables);
  keepJpegTables(entries, tag::kJpegAcTables);
  for (const TiffEntry& entry : entries) {
    if (leadsToDirectories(entry))
      std::ranges::copy(followedOffsets(entry), std::back_inserter(waitingDirectories_));
  }
  return entries;
}

// The second number of the field is that of all pages, or 0 where it is not known.
void TiffKeeper::numberPage(const Entries& entries, std::size_t number, std::size_t pages) {
  const TiffEntry* field = find(entries, tag::kPageNumber);
  if (field == nullptr || !isOneOf(field->type, {TiffType::Short}) || field->count != 2) return;
  const bool knowsTotal = structure_.number(field->valueAt + 2, 2) != 0;
  pageNumbers_.push_back({field->valueAt, static_cast<std::uint16_t>(number),
                          static_cast<std::uint16_t>(knowsTotal ? pages : 0)});
}

void TiffKeeper::keepData(const Entries& entries, std::uint16_t offsetsTag,
                          std::uint16_t sizesTag) {
  const TiffEntry* offsetsEntry = find(entries, offsetsTag);
  if (offsetsEntry == nullptr) return;
  const TiffEntry* sizesEntry = find(entries, sizesTag);
  if (sizesEntry == nullptr || sizesEntry->count < offsetsEntry->count) {
    throw structure_.damaged("image data without its size");
  }
  const std::vector<std::uint64_t> offsets = followedOffsets(*offsetsEntry);
  const std::vector<std::uint64_t> sizes = numbers(*sizesEntry);
  for (std::size_t i = 0; i < offsets.size(); ++i) keep(offsets[i], sizes[i]);
}

// Tables of old-style JPEG (TIFF 6.0 section 22): quantisation tables of a fixed size, Huffman
// tables of 16 counts and as many values as the counts add up to.
void TiffKeeper::keepJpegTables(const Entries& entries, std::uint16_t tablesTag) {
  const TiffEntry* tables = find(entries, tablesTag);
  if (tables == nullptr) return;
  for (const std::uint64_t offset : followedOffsets(*tables)) {
    if (offset == 0) continue;
    std::uint64_t length = kQuantisationTableBytes;
    if (tablesTag != tag::kJpegQTables) {
      length = kHuffmanCounts;
      for (unsigned i = 0; i < kHuffmanCounts; ++i) length += structure_.number(offset + i, 1);
    }
    keep(offset, length);
  }
}

void TiffKeeper::keepSubdirectories() {
  while (!waitingDirectories_.empty()) {
    const std::uint64_t offset = waitingDirectories_.back();
    waitingDirectories_.pop_back();
    if (offset == 0 || !seenDirectories_.insert(offset).second) continue;
    const TiffDirectoryPlace place = structure_.directory(offset);
    const std::uint64_t next = structure_.number(place.nextLink, structure_.form().offsetBytes());
    addLink(place.nextLink, next);
    waitingDirectories_.push_back(next);
    keepFields(place);
  }
}

std::vector<std::uint64_t> TiffKeeper::numbers(const TiffEntry& entry) {
  if (!isWholeNumber(entry)) throw structure_.damaged("an offset or a size of a strange type");
  if (entry.count > kMostRemembered) throw structure_.damaged("an absurd number of strips");
  spend(entry.count);
  return structure_.numbers(entry.valueAt, entry.count, tiffTypeBytes(entry.type));
}

std::vector<std::uint64_t> TiffKeeper::followedOffsets(const TiffEntry& entry) {
  std::vector<std::uint64_t> offsets = numbers(entry);
  lists_.push_back({entry.valueAt, entry.count, tiffTypeBytes(entry.type)});
  return offsets;
}

void TiffKeeper::keep(std::uint64_t from, std::uint64_t length) {
  if (length != 0) structure_.requireInside(from, length);
  relocation_.keep(from, length);
  if (relocation_.marked() > kMostRemembered) throw structure_.damaged("too many strips");
}

void TiffKeeper::addLink(std::uint64_t at, std::uint64_t target) {
  links_.push_back({at, target});
  if (links_.size() > kMostRemembered) throw structure_.damaged("too many fields");
}

void TiffKeeper::spend(std::uint64_t references) {
  if (references > referencesLeft_) throw structure_.damaged("too many references");
  referencesLeft_ -= references;
}

void TiffKeeper::writeTo(OutputFile& target, const OutputFile& source) const {
  for (const Relocation::Range& range : relocation_.ranges()) {
    target.copy(source, range.from, range.length, range.to);
  }
  // Every offset that is overwritten is inside a kept range. An empty strip gets offset 0.
  for (const Link& link : links_) {
    Bytes bytes;
    const std::uint64_t leadsTo = link.target == 0 ? 0 : relocation_.moved(link.target).value_or(0);
    structure_.form().put(bytes, leadsTo, structure_.form().offsetBytes());
    target.write(relocation_.moved(link.at).value(), bytes);
  }
  for (const OffsetList& list : lists_) writeList(list, target);
  for (const PageNumber& page : pageNumbers_) {
    Bytes bytes;
    structure_.form().put(bytes, page.number, 2);
    structure_.form().put(bytes, page.total, 2);
    target.write(relocation_.moved(page.at).value(), bytes);
  }
}

void TiffKeeper::writeList(const OffsetList& list, OutputFile& target) const {
  const std::uint64_t to = relocation_.moved(list.at).value();
  for (std::uint64_t done = 0; done < list.count; done += kListPiece) {
    const std::uint64_t count = std::min(kListPiece, list.count - done);
    Bytes bytes;
    for (const std::uint64_t offset :
         structure_.numbers(list.at + done * list.width, count, list.width)) {
      structure_.form().put(bytes, relocation_.moved(offset).value_or(0), list.width);
    }
    target.write(to + done * list.width, bytes);
  }
}

void TiffFile::deletePage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  const TiffStructure structure(file);
  std::vector<TiffDirectoryPlace> pages = structure.pages();
  requireDeletablePage(path, page, pages.size());
  pages.erase(pages.begin() + (page - 1));

  const TiffKeeper keeper(structure, pages);
  FileReplacement replacement(file.path());
  OutputFile shorter = OutputFile::createAnew(replacement.temporaryPath());
  keeper.writeTo(shorter, file);
  shorter.close();
  replacement.commit();
}

}  // namespace orvane
