#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// An ICC profile in a file.
struct PdfStoredProfile {
  std::string fingerprint;  ///< of its dictionary and its bytes
  std::uint32_t object = 0;
};

/// Where the objects of a growing PDF file are stored: all that must be known to add a page, and
/// the texts that hold the pages together.
///
/// The pages are divided into groups of 100. The objects of the open group are followed by the
/// tail: the group's leaf of the page tree, the root of the page tree, cross-reference and trailer.
/// A new page overwrites the tail and is followed by a new one. When a group is full, its leaf and
/// its own cross-reference section stay in the file, and later sections refer to it with /Prev. So
/// a tail never describes more than one group, however long the document is, and no object in the
/// file is out of date.
///
/// A page has three objects, numbered in this order: image, content stream, page. An ICC profile
/// that is not in the file yet comes before the image.
class PdfLayout {
 public:
  static constexpr std::uint32_t kPagesPerGroup = 100;
  static constexpr std::uint32_t kObjectsPerPage = 3;  ///< without a profile
  static constexpr std::uint32_t kMostPages = 65535;
  static constexpr std::uint32_t kMostGroups = kMostPages / kPagesPerGroup + 1;
  static constexpr std::uint32_t kMostObjects = (kObjectsPerPage + 1) * kMostPages + 1000;
  static constexpr std::uint64_t kMostBytes = 9'999'999'999;  ///< an entry has 10 digits
  static constexpr std::size_t kEntryBytes = 20;

  std::string documentId;             ///< 32 hexadecimal digits
  std::vector<std::uint32_t> leaves;  ///< object numbers of all groups' leaves, the open one last
  std::uint64_t closedSection = 0;    ///< offset of the last full group's cross-reference section
  std::string entries;  ///< cross-reference entries of the open group, without its leaf
  std::vector<std::uint32_t> pageObjects;  ///< numbers of the open group's page objects
  std::uint64_t end = 0;                   ///< offset of the next object; the tail is stored here
  std::vector<PdfStoredProfile> profiles;  ///< all that are in the file

  /// A file that holds only the common head.
  static PdfLayout empty(std::string documentId);

  std::size_t closedGroups() const { return leaves.size() - 1; }
  std::uint32_t pages() const {
    return static_cast<std::uint32_t>(closedGroups() * kPagesPerGroup + pageObjects.size());
  }
  bool isGroupFull() const { return pageObjects.size() == kPagesPerGroup; }
  /// The number of the next object; all numbers below are in use.
  std::uint32_t nextObject() const;
  /// The object of a profile; 0 when it is not in the file.
  std::uint32_t profileObject(const std::string& fingerprint) const;

  /// Closes the full group. Returns the text to store at the old `end`, and moves `end` after it.
  std::string closeGroup();
  /// Places the next object, of `bytes` bytes, at `end`. Returns its offset, and moves `end` after
  /// it.
  std::uint64_t place(std::uint64_t bytes);
  /// Makes the object placed last the next page of the open group.
  void endPage() { pageObjects.push_back(nextObject() - 1); }

  /// The text that makes the file complete, to be stored at `end`.
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
