#pragma once

#include <cstdint>

#include "imaging/page/Bytes.h"

namespace orvane {

/// TIFF 6.0 field types that this program writes, and the widths of all types it may meet.
enum class TiffType : std::uint16_t {
  Ascii = 2,
  Short = 3,
  Long = 4,
  Rational = 5,
  Undefined = 7,
  Ifd = 13,
  Long8 = 16,
  Ifd8 = 18,
};

/// Bytes of one value of a field type; 0 for a type that neither TIFF 6.0 nor BigTIFF knows.
inline unsigned tiffTypeBytes(std::uint16_t type) {
  constexpr unsigned kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
  return type < std::size(kBytes) ? kBytes[type] : 0;
}

/// How numbers and offsets stand in one TIFF file.
struct TiffForm {
  bool bigEndian = false;
  bool bigTiff = false;

  /// Bytes of a file offset, which is also the room for a value inside a directory entry.
  unsigned offsetBytes() const { return bigTiff ? 8 : 4; }
  /// Bytes of the number of entries at the front of a directory.
  unsigned countBytes() const { return bigTiff ? 8 : 2; }
  unsigned entryBytes() const { return bigTiff ? 20 : 12; }
  /// Where the value of an entry, or its offset, stands in the entry.
  unsigned valuePlace() const { return bigTiff ? 12 : 8; }
  /// Where the header holds the offset of the first directory.
  unsigned firstLink() const { return bigTiff ? 8 : 4; }
  unsigned headerBytes() const { return bigTiff ? 16 : 8; }

  void put(Bytes& out, std::uint64_t value, unsigned width) const {
    for (unsigned i = 0; i < width; ++i) {
      const unsigned shift = 8 * (bigEndian ? width - 1 - i : i);
      out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
  }

  std::uint64_t get(const std::uint8_t* at, unsigned width) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < width; ++i) value = value << 8 | at[bigEndian ? i : width - 1 - i];
    return value;
  }
};

}  // namespace orvane
