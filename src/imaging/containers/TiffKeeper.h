#pragma once

#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

#include "imaging/containers/Relocation.h"
#include "imaging/containers/tiff_structure.h"

namespace orvane {

/// Keeps a choice of pages of a TIFF file. It collects the ranges of bytes that they need, and
/// where among them offsets stand that must follow when the ranges move. The bytes themselves are
/// not interpreted further, so strips, unknown and private fields travel untouched. Only PageNumber
/// (TIFF 6.0 section 12) is counted again where a page has it.
class TiffKeeper {
 public:
  /// Collects what `pages` need: strips, tiles, fields and the directories below them. They are
  /// linked in the given order. Throws Failure for a structure that does not fit the file.
  TiffKeeper(const TiffStructure& structure, std::span<const TiffDirectoryPlace> pages);

  /// Writes what is kept to `target`.
  void writeTo(OutputFile& target, const OutputFile& source) const;

 private:
  struct Link {  ///< an offset in the file, and where it leads
    std::uint64_t at;
    std::uint64_t target;
  };
  struct PageNumber {  ///< where the two numbers of a PageNumber field stand, and what they become
    std::uint64_t at;
    std::uint16_t number;
    std::uint16_t total;
  };
  struct OffsetList {  ///< a row of offsets in the file
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
