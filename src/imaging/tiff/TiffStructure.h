#pragma once

#include <cstdint>
#include <vector>

#include "foundation/OutputFile.h"
#include "imaging/tiff/TiffForm.h"

namespace orvane {

/// The position of one directory of a TIFF file.
struct TiffDirectoryPlace {
  std::uint64_t offset = 0;
  std::uint64_t entries = 0;
  std::uint64_t nextLink = 0;  ///< position of the offset of the next directory
};

/// One field of a directory, as it is stored in the file.
struct TiffEntry {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint64_t count = 0;
  std::uint64_t valueAt = 0;    ///< position of the value, inside the entry or elsewhere
  std::uint64_t pointerAt = 0;  ///< position of `valueAt` in the entry; 0 when the value is inside
  /// Bytes of the whole value; 0 for a field type of unknown width.
  std::uint64_t valueBytes() const { return count * tiffTypeBytes(type); }
};

/// The most pages that a TIFF file can number (PageNumber is a 16-bit field).
constexpr std::uint32_t kMostTiffPages = 65535;

/// Reads the structure of a TIFF file, classic or BigTIFF. Every offset and count is checked
/// against the file before it is used; what does not fit throws Failure.
class TiffStructure {
 public:
  /// Reads the header. Throws Failure for a file that is no TIFF.
  explicit TiffStructure(const OutputFile& file);

  TiffForm form() const { return form_; }
  std::uint64_t fileSize() const { return size_; }

  /// The directories of the pages in their order. Throws Failure for a circular chain.
  std::vector<TiffDirectoryPlace> pages() const;
  TiffDirectoryPlace directory(std::uint64_t offset) const;
  std::vector<TiffEntry> entries(const TiffDirectoryPlace& place) const;
  /// One unsigned number of the file, up to 8 bytes wide.
  std::uint64_t number(std::uint64_t offset, unsigned width) const;
  /// `count` such numbers in sequence.
  std::vector<std::uint64_t> numbers(std::uint64_t offset, std::uint64_t count,
                                     unsigned width) const;
  /// Throws Failure unless the range is inside the file.
  void requireInside(std::uint64_t offset, std::uint64_t length) const;
  Failure damaged(const char* reason) const;

 private:
  TiffEntry entry(const std::uint8_t* bytes, std::uint64_t offset) const;

  const OutputFile& file_;
  std::uint64_t size_;
  TiffForm form_;
};

}  // namespace orvane
