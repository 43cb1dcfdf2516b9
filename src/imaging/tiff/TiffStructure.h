#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "foundation/ByteSource.h"
#include "foundation/Failure.h"
#include "imaging/tiff/TiffVariant.h"

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

/// The entry of a tag, or null.
const TiffEntry* findEntry(const std::vector<TiffEntry>& entries, std::uint16_t tag);

/// The most pages that a TIFF file can number (PageNumber is a 16-bit field).
constexpr std::uint32_t kMostTiffPages = 65535;

/// The variant that the header of a file states. Throws Failure, naming `path`, for a file that is
/// no TIFF.
TiffVariant readTiffVariant(const ByteSource& file, const std::wstring& path);

/// Reads the structure of a TIFF file, classic or BigTIFF: its chain of directories, one a page
/// (TIFF 6.0 section 2), and their entries. libtiff would read every directory whole, and ends a
/// broken chain without a message. Positions are checked against the file before they are read;
/// what does not fit throws Failure, naming `path`.
class TiffStructure {
 public:
  /// The structure of `file`, which outlives the object.
  TiffStructure(const ByteSource& file, std::wstring path, TiffVariant variant);

  TiffVariant variant() const { return variant_; }
  std::uint64_t fileSize() const { return size_; }

  /// Visits the directories of the pages in their order until `visit` returns false. A chain that
  /// leads out of the file or back to an earlier directory throws Failure at that place.
  void forEachPage(const std::function<bool(const TiffDirectoryPlace&)>& visit) const;
  /// The directories of all pages, of which there may be `kMostTiffPages`.
  std::vector<TiffDirectoryPlace> pages() const;
  TiffDirectoryPlace directory(std::uint64_t offset) const;
  /// The entries of a directory, of which there may be 4096. Their values are not checked.
  std::vector<TiffEntry> entries(const TiffDirectoryPlace& place) const;

  /// One unsigned number of the file, up to 8 bytes wide.
  std::uint64_t number(std::uint64_t offset, unsigned width) const;
  /// `count` such numbers in sequence.
  std::vector<std::uint64_t> numbers(std::uint64_t offset, std::uint64_t count,
                                     unsigned width) const;
  /// Throws Failure unless the range is inside the file.
  void requireInside(std::uint64_t offset, std::uint64_t length) const;
  /// A fault of the structure, apart from the chain of pages.
  Failure damaged(const std::string& reason) const;

 private:
  bool isInside(std::uint64_t offset, std::uint64_t length) const;
  void read(std::uint64_t offset, std::span<std::uint8_t> into) const;
  Failure damagedChain(const char* reason) const;
  TiffEntry entry(const std::uint8_t* bytes, std::uint64_t offset) const;

  const ByteSource& file_;
  std::wstring path_;
  std::uint64_t size_;
  TiffVariant variant_;
};

}  // namespace orvane
