#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "imaging/tiff/TiffStructure.h"

namespace orvane {

/// New places for the kept ranges of a file when everything else is left out. Ranges keep their
/// order, may overlap, and move towards the beginning by whole alignment units, so that no offset
/// grows and aligned data stays aligned.
class Relocation {
 public:
  struct Range {
    std::uint64_t from = 0;
    std::uint64_t length = 0;
    std::uint64_t to = 0;
  };

  /// Marks a range as kept. Ranges that follow one another closely become one.
  void keep(std::uint64_t from, std::uint64_t length);
  /// The number of ranges marked so far, after that joining.
  std::size_t marked() const { return ranges_.size(); }

  /// Gives every kept range its new place, from 0 on; the range at 0 stays. To be called once,
  /// after the last `keep`.
  void arrange(std::uint64_t alignment);
  /// The kept ranges in their order, none overlapping another.
  const std::vector<Range>& ranges() const { return ranges_; }
  /// The new place of an offset; nothing for one that is not kept.
  std::optional<std::uint64_t> moved(std::uint64_t offset) const;

 private:
  std::vector<Range> ranges_;
};

/// Keeps a choice of pages of a TIFF file. It collects the ranges of bytes that they need and
/// the positions of the offsets in them that must change when the ranges move. The bytes themselves
/// are not interpreted further, so strips and unknown or private fields are copied unchanged. Only
/// PageNumber (TIFF 6.0 section 12) is renumbered in pages that have it.
class TiffKeeper {
 public:
  /// Collects what `pages` need: strips, tiles, fields and the directories below them. They are
  /// linked in the given order. Throws Failure for a structure that does not fit the file.
  TiffKeeper(const TiffStructure& structure, std::span<const TiffDirectoryPlace> pages);

  /// Writes what is kept to `target`.
  void writeTo(OutputFile& target, const OutputFile& source) const;

 private:
  struct Link {  ///< an offset stored in the file, and its value
    std::uint64_t at;
    std::uint64_t target;
  };
  struct PageNumber {  ///< position and new values of a PageNumber field
    std::uint64_t at;
    std::uint16_t number;
    std::uint16_t total;
  };
  struct OffsetList {  ///< an array of offsets in the file
    std::uint64_t at;
    std::uint64_t count;
    unsigned width;
  };
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
  void writeList(const OffsetList& list, OutputFile& target) const;

  const TiffStructure& structure_;
  Relocation relocation_;
  std::vector<Link> links_;
  std::vector<OffsetList> lists_;
  std::vector<PageNumber> pageNumbers_;
  std::vector<std::uint64_t> waitingDirectories_;
  std::unordered_set<std::uint64_t> seenDirectories_;
  std::uint64_t referencesLeft_;
};

}  // namespace orvane
