#include "imaging/tiff/tiff_removal.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/OutputFile.h"
#include "foundation/durable_file.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/tiff/TiffStructure.h"

// A page is removed by copying what the other pages need to a new file, and extracted by copying
// what it needs itself, in two steps. PageCollector walks the directories and collects the ranges
// of bytes that are kept and the positions of the offsets in them. PageWriter writes the ranges
// closer together, then the offsets again. The bytes themselves are not interpreted further, so
// strips and unknown or private fields are copied unchanged. Only PageNumber (TIFF 6.0 section 12)
// is renumbered in pages that have it.

namespace orvane {
namespace {

/// New places for the kept ranges of a file when everything else is left out. Ranges keep their
/// order, may overlap, and move towards the beginning by whole alignment units, so that no offset
/// grows and aligned data stays aligned.
class Relocation {
 public:
  struct Range {
    std::uint64_t from = 0;
    std::uint64_t length = 0;
    std::uint64_t to = 0;
    std::uint64_t end() const { return from + length; }
  };

  /// Marks a range as kept. Ranges that follow one another closely become one.
  void keep(std::uint64_t from, std::uint64_t length) {
    if (length == 0) return;
    // A byte of padding between two strips is not worth a range of its own.
    if (!ranges_.empty()) {
      Range& last = ranges_.back();
      if (from >= last.from && from <= last.end() + 1) {
        last.length = std::max(last.end(), from + length) - last.from;
        return;
      }
    }
    ranges_.push_back({from, length, 0});
  }

  /// Gives every kept range its new place, from 0 on; the range at 0 stays. To be called once,
  /// after the last `keep`.
  void arrange(std::uint64_t alignment) {
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

  /// The kept ranges; after `arrange` in their order, none overlapping another.
  const std::vector<Range>& ranges() const { return ranges_; }

  /// The new place of an offset; nothing for one that is not kept.
  std::optional<std::uint64_t> moved(std::uint64_t offset) const {
    const auto next = std::ranges::upper_bound(ranges_, offset, {}, &Range::from);
    if (next == ranges_.begin()) return std::nullopt;
    const Range& range = *std::prev(next);
    if (offset >= range.end()) return std::nullopt;
    return range.to + (offset - range.from);
  }

 private:
  std::vector<Range> ranges_;
};

struct Link {  ///< an offset stored in the file, and its value
  std::uint64_t at;
  std::uint64_t target;
};

struct OffsetList {  ///< an array of offsets in the file
  std::uint64_t at;
  std::uint64_t count;
  unsigned width;
};

struct PageNumber {  ///< position and new values of a PageNumber field
  std::uint64_t at;
  std::uint16_t number;
  std::uint16_t total;
};

/// What is kept of a file, and what is written over in it after it has moved.
struct KeptPages {
  Relocation bytes;
  std::vector<Link> links;
  std::vector<OffsetList> lists;
  std::vector<PageNumber> pageNumbers;
};

/// Collects what a choice of pages needs: directories, fields, strips, tiles and the directories
/// below the pages. Throws Failure for a structure that does not fit the file.
class PageCollector {
 public:
  explicit PageCollector(const TiffStructure& structure) : structure_(structure) {}

  /// Collects the pages, which are linked in the given order. To be called once.
  KeptPages collect(std::span<const TiffDirectoryPlace> pages);

 private:
  using Entries = std::vector<TiffEntry>;

  void linkPages(std::span<const TiffDirectoryPlace> pages);
  Entries keepFields(const TiffDirectoryPlace& place);
  void numberPage(const Entries& entries, std::size_t number, std::size_t pages);
  void keepData(const Entries& entries, std::uint16_t offsetsTag, std::uint16_t sizesTag);
  void keepJpegTables(const Entries& entries, std::uint16_t tablesTag);
  void keepSubdirectories();
  std::vector<std::uint64_t> numbers(const TiffEntry& entry);
  std::vector<std::uint64_t> followedOffsets(const TiffEntry& entry);
  void keep(std::uint64_t from, std::uint64_t length);
  void addLink(std::uint64_t at, std::uint64_t target);
  void spend(std::uint64_t references);

  // Far above any real document, and low enough that a hostile file costs neither minutes nor
  // gigabytes: numbers looked at, and things remembered.
  static constexpr std::uint64_t kMostReferences = 32'000'000;
  static constexpr std::size_t kMostRemembered = 4'000'000;

  const TiffStructure& structure_;
  KeptPages kept_;
  std::vector<std::uint64_t> waitingDirectories_;
  std::unordered_set<std::uint64_t> seenDirectories_;
  std::uint64_t referencesLeft_ = kMostReferences;
};

KeptPages PageCollector::collect(std::span<const TiffDirectoryPlace> pages) {
  keep(0, structure_.variant().headerBytes());
  linkPages(pages);
  for (std::size_t i = 0; i < pages.size(); ++i) {
    numberPage(keepFields(pages[i]), i, pages.size());
  }
  keepSubdirectories();
  kept_.bytes.arrange(structure_.variant().bigTiff ? 8 : 2);
  return std::move(kept_);
}

void PageCollector::linkPages(std::span<const TiffDirectoryPlace> pages) {
  std::uint64_t link = structure_.variant().firstLink();
  for (const TiffDirectoryPlace& page : pages) {
    addLink(link, page.offset);
    link = page.nextLink;
    seenDirectories_.insert(page.offset);
  }
  addLink(link, 0);
}

bool isOneOf(std::uint16_t type, std::initializer_list<TiffType> types) {
  return std::ranges::find(types, static_cast<TiffType>(type)) != types.end();
}

bool leadsToDirectories(const TiffEntry& entry) {
  constexpr std::uint16_t kTags[] = {tag::kSubIfds, tag::kGlobalParametersIfd, tag::kExifIfd,
                                     tag::kGpsIfd, tag::kInteroperabilityIfd};
  return isOneOf(entry.type, {TiffType::Ifd, TiffType::Ifd8}) ||
         std::ranges::find(kTags, entry.tag) != std::end(kTags);
}

PageCollector::Entries PageCollector::keepFields(const TiffDirectoryPlace& place) {
  keep(place.offset, place.nextLink + structure_.variant().offsetBytes() - place.offset);
  Entries entries = structure_.entries(place);
  for (const TiffEntry& entry : entries) {
    spend(1);
    const unsigned width = tiffTypeBytes(entry.type);
    if (width != 0 && entry.count > structure_.fileSize() / width) {
      throw structure_.damaged("a field larger than the file");
    }
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
void PageCollector::numberPage(const Entries& entries, std::size_t number, std::size_t pages) {
  const TiffEntry* field = findEntry(entries, tag::kPageNumber);
  if (field == nullptr || !isOneOf(field->type, {TiffType::Short}) || field->count != 2) return;
  const bool knowsTotal = structure_.number(field->valueAt + 2, 2) != 0;
  kept_.pageNumbers.push_back({field->valueAt, static_cast<std::uint16_t>(number),
                               static_cast<std::uint16_t>(knowsTotal ? pages : 0)});
}

void PageCollector::keepData(const Entries& entries, std::uint16_t offsetsTag,
                             std::uint16_t sizesTag) {
  const TiffEntry* offsetsEntry = findEntry(entries, offsetsTag);
  if (offsetsEntry == nullptr) return;
  const TiffEntry* sizesEntry = findEntry(entries, sizesTag);
  if (sizesEntry == nullptr || sizesEntry->count < offsetsEntry->count) {
    throw structure_.damaged("image data without its size");
  }
  const std::vector<std::uint64_t> offsets = followedOffsets(*offsetsEntry);
  const std::vector<std::uint64_t> sizes = numbers(*sizesEntry);
  for (std::size_t i = 0; i < offsets.size(); ++i) keep(offsets[i], sizes[i]);
}

// Tables of old-style JPEG (TIFF 6.0 section 22): quantisation tables of a fixed size, Huffman
// tables of 16 counts and as many values as the counts add up to.
void PageCollector::keepJpegTables(const Entries& entries, std::uint16_t tablesTag) {
  constexpr std::uint64_t kQuantisationTableBytes = 64;
  constexpr std::uint64_t kHuffmanCounts = 16;
  const TiffEntry* tables = findEntry(entries, tablesTag);
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

void PageCollector::keepSubdirectories() {
  while (!waitingDirectories_.empty()) {
    const std::uint64_t offset = waitingDirectories_.back();
    waitingDirectories_.pop_back();
    if (offset == 0 || !seenDirectories_.insert(offset).second) continue;
    const TiffDirectoryPlace place = structure_.directory(offset);
    const std::uint64_t next =
        structure_.number(place.nextLink, structure_.variant().offsetBytes());
    addLink(place.nextLink, next);
    waitingDirectories_.push_back(next);
    keepFields(place);
  }
}

std::vector<std::uint64_t> PageCollector::numbers(const TiffEntry& entry) {
  if (!isOneOf(entry.type,
               {TiffType::Short, TiffType::Long, TiffType::Ifd, TiffType::Long8, TiffType::Ifd8})) {
    throw structure_.damaged("an offset or a size of a strange type");
  }
  if (entry.count > kMostRemembered) throw structure_.damaged("an absurd number of strips");
  spend(entry.count);
  return structure_.numbers(entry.valueAt, entry.count, tiffTypeBytes(entry.type));
}

std::vector<std::uint64_t> PageCollector::followedOffsets(const TiffEntry& entry) {
  std::vector<std::uint64_t> offsets = numbers(entry);
  kept_.lists.push_back({entry.valueAt, entry.count, tiffTypeBytes(entry.type)});
  return offsets;
}

void PageCollector::keep(std::uint64_t from, std::uint64_t length) {
  if (length != 0) structure_.requireInside(from, length);
  kept_.bytes.keep(from, length);
  if (kept_.bytes.ranges().size() > kMostRemembered) throw structure_.damaged("too many strips");
}

void PageCollector::addLink(std::uint64_t at, std::uint64_t target) {
  kept_.links.push_back({at, target});
  if (kept_.links.size() > kMostRemembered) throw structure_.damaged("too many fields");
}

void PageCollector::spend(std::uint64_t references) {
  if (references > referencesLeft_) throw structure_.damaged("too many references");
  referencesLeft_ -= references;
}

/// Writes kept pages of `source`, whose structure is given, to an empty file.
class PageWriter {
 public:
  PageWriter(const KeptPages& kept, const TiffStructure& structure, OutputFile& target)
      : kept_(kept), structure_(structure), variant_(structure.variant()), target_(target) {}

  void write(const OutputFile& source) {
    for (const Relocation::Range& range : kept_.bytes.ranges()) {
      target_.copy(source, range.from, range.length, range.to);
    }
    for (const Link& link : kept_.links) {
      writeNumbers(link.at, {moved(link.target)}, variant_.offsetBytes());
    }
    for (const OffsetList& list : kept_.lists) writeList(list);
    for (const PageNumber& page : kept_.pageNumbers) {
      writeNumbers(page.at, {page.number, page.total}, 2);
    }
  }

 private:
  // 0 for the offset of an empty strip.
  std::uint64_t moved(std::uint64_t offset) const { return kept_.bytes.moved(offset).value_or(0); }

  void writeList(const OffsetList& list) {
    constexpr std::uint64_t kPiece = 65'536;
    for (std::uint64_t done = 0; done < list.count; done += kPiece) {
      const std::uint64_t at = list.at + done * list.width;
      std::vector<std::uint64_t> offsets =
          structure_.numbers(at, std::min(kPiece, list.count - done), list.width);
      for (std::uint64_t& offset : offsets) offset = moved(offset);
      writeNumbers(at, offsets, list.width);
    }
  }

  // Writes numbers whose position was `at` before the move; it is inside a kept range.
  void writeNumbers(std::uint64_t at, const std::vector<std::uint64_t>& numbers, unsigned width) {
    Bytes bytes;
    for (const std::uint64_t number : numbers) variant_.put(bytes, number, width);
    target_.write(kept_.bytes.moved(at).value(), bytes);
  }

  const KeptPages& kept_;
  const TiffStructure& structure_;
  TiffVariant variant_;
  OutputFile& target_;
};

// Writes a choice of the pages of `source`, whose structure is given, to the new file `target`.
void writePages(const TiffStructure& structure, const OutputFile& source,
                std::span<const TiffDirectoryPlace> pages, const std::wstring& target) {
  const KeptPages kept = PageCollector(structure).collect(pages);
  OutputFile file = OutputFile::createAnew(target);
  PageWriter(kept, structure, file).write(source);
  file.close();
}

}  // namespace

void removeTiffPage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  const TiffStructure structure(file, file.path(), readTiffVariant(file, file.path()));
  std::vector<TiffDirectoryPlace> pages = structure.pages();
  requireDeletablePage(path, page, pages.size());
  pages.erase(pages.begin() + (page - 1));

  FileReplacement replacement(file.path());
  writePages(structure, file, pages, replacement.temporaryPath());
  replacement.commit();
}

void extractTiffPage(const std::wstring& path, std::int32_t page, const std::wstring& target) {
  const OutputFile file = OutputFile::openToRead(path);
  const TiffStructure structure(file, file.path(), readTiffVariant(file, file.path()));
  const std::vector<TiffDirectoryPlace> pages = structure.pages();
  if (page < 1 || static_cast<std::size_t>(page) > pages.size()) {
    throw fileFailure(path, "there is no page " + std::to_string(page));
  }
  writePages(structure, file, std::span(pages).subspan(static_cast<std::size_t>(page) - 1, 1),
             target);
}

}  // namespace orvane
