#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// Object numbers of one page, and of the page tree's leaf that it hangs on.
struct PdfPageNumbers {
  std::uint32_t leaf = 0;
  std::uint32_t image = 0;
  std::uint32_t content = 0;
  std::uint32_t page = 0;
};

/// What must be known of a growing PDF file to add a page to it, and the texts that hold its pages
/// together.
///
/// The pages stand in groups of 100. The objects of the open group are followed by the tail: the
/// group's leaf of the page tree, the root of the page tree, cross-reference and trailer. Every new
/// page goes over the old tail and a new tail goes behind it. When a group is full, its leaf and
/// its own cross-reference section stay in the file for good, and the later sections refer to it
/// with /Prev. So a tail never describes more than one group, however long the document is, and
/// nothing in the file is stale.
class PdfOutline {
 public:
  static constexpr std::uint32_t kPagesPerGroup = 100;
  static constexpr std::uint32_t kObjectsPerPage = 3;
  static constexpr std::uint32_t kObjectsPerGroup = 1 + kObjectsPerPage * kPagesPerGroup;
  static constexpr std::uint32_t kMostPages = 65535;
  static constexpr std::uint64_t kMostBytes = 9'999'999'999;  ///< 10 digits a cross-reference
  static constexpr std::size_t kEntryBytes = 20;

  std::string documentId;           ///< 32 hexadecimal digits
  std::uint32_t closedGroups = 0;   ///< groups that are full and left behind
  std::uint64_t closedSection = 0;  ///< where the last one's cross-reference stands
  std::string entries;              ///< cross-reference entries of the open group's page objects
  std::uint64_t end = 0;            ///< where the next object goes: the tail stands here

  /// A file that holds nothing but the common head.
  static PdfOutline empty(std::string documentId);

  std::uint32_t pages() const { return closedGroups * kPagesPerGroup + pagesInGroup(); }
  std::uint32_t pagesInGroup() const;
  bool isGroupFull() const { return pagesInGroup() == kPagesPerGroup; }

  /// Closes the full group. Answers the text that stays at the old `end`; `end` moves behind it.
  std::string closeGroup();
  /// The object numbers of the next page.
  PdfPageNumbers next() const { return numbers(closedGroups, pagesInGroup()); }
  /// Notes that the next page's three objects have been placed, and where they end.
  void addPage(std::uint64_t image, std::uint64_t content, std::uint64_t page,
               std::uint64_t endOfPage);

  /// The text that makes the file complete; stands at `end`.
  std::string tail() const;
  /// The cross-reference section of a group that was closed, whose leaf stands at `leafOffset`.
  std::string closedSectionText(std::uint64_t leafOffset) const;

  static PdfPageNumbers numbers(std::uint32_t group, std::uint32_t pageInGroup);
  /// The cross-reference entry of an object, 20 bytes long.
  static std::string entry(std::uint64_t offset);

 private:
  std::string leaf() const;
  std::string root() const;
  std::string trailer() const;
};

}  // namespace orvane
