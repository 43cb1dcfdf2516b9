#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// Object numbers of one page, and of the page tree's leaf that it hangs on.
struct PdfPageNumbers {
  std::uint32_t leaf = 0;
  std::uint32_t profile = 0;  ///< an ICC profile that is new to the file; 0: the page brings none
  std::uint32_t image = 0;
  std::uint32_t content = 0;
  std::uint32_t page = 0;
};

/// Where the objects of one page stand.
struct PdfPageOffsets {
  std::uint64_t profile = 0;  ///< 0: the page brings none
  std::uint64_t image = 0;
  std::uint64_t content = 0;
  std::uint64_t page = 0;
};

/// An ICC profile in a file, known again by the fingerprint of its dictionary and its
/// bytes.
struct PdfProfile {
  std::string fingerprint;
  std::uint32_t object = 0;
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
///
/// A page has three objects: image, content and page. One whose ICC profile is not in the
/// file yet has it as a fourth in front of them. Numbers are given in the order of the objects.
class PdfOutline {
 public:
  static constexpr std::uint32_t kPagesPerGroup = 100;
  static constexpr std::uint32_t kObjectsPerPage = 3;  ///< without a profile
  static constexpr std::uint32_t kMostPages = 65535;
  static constexpr std::uint32_t kMostGroups = kMostPages / kPagesPerGroup + 1;
  static constexpr std::uint32_t kMostObjects = (kObjectsPerPage + 1) * kMostPages + 1000;
  static constexpr std::uint64_t kMostBytes = 9'999'999'999;  ///< 10 digits a cross-reference
  static constexpr std::size_t kEntryBytes = 20;

  std::string documentId;             ///< 32 hexadecimal digits
  std::vector<std::uint32_t> leaves;  ///< object numbers of all groups' leaves, the open one last
  std::uint64_t closedSection = 0;    ///< where the cross-reference of the last full group stands
  std::string entries;  ///< cross-reference entries of the open group, without its leaf
  std::vector<std::uint32_t> pageObjects;  ///< numbers of the open group's page dictionaries
  std::uint64_t end = 0;                   ///< where the next object goes: the tail stands here
  std::vector<PdfProfile> profiles;        ///< all that are in the file

  /// A file that holds nothing but the common head.
  static PdfOutline empty(std::string documentId);

  std::size_t closedGroups() const { return leaves.size() - 1; }
  std::uint32_t pages() const {
    return static_cast<std::uint32_t>(closedGroups() * kPagesPerGroup + pageObjects.size());
  }
  bool isGroupFull() const { return pageObjects.size() == kPagesPerGroup; }
  /// The number of the next object; all numbers below are in use.
  std::uint32_t nextObject() const;
  /// The object of a profile; 0 when it is not in the file.
  std::uint32_t profileObject(const std::string& fingerprint) const;

  /// Closes the full group. Answers the text that stays at the old `end`; `end` moves behind it.
  std::string closeGroup();
  /// The object numbers of the next page.
  PdfPageNumbers next(bool bringsProfile) const;
  /// Notes that the next page's objects have been placed, and where they end.
  void addPage(const PdfPageNumbers& numbers, const PdfPageOffsets& at, std::uint64_t endOfPage);

  /// The text that makes the file complete; stands at `end`.
  std::string tail() const;

  /// The cross-reference entry of an object, 20 bytes long.
  static std::string entry(std::uint64_t offset);

 private:
  std::string leaf() const;
  std::string root() const;
  std::string closedSectionText() const;
  std::string trailer() const;
};

}  // namespace orvane
