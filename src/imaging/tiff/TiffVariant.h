#pragma once

#include <cstdint>

#include "foundation/Bytes.h"

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

/// The variant of TIFF that a file is: how its numbers and offsets are stored.
struct TiffVariant {
  bool bigEndian = false;
  bool bigTiff = false;

  /// Bytes of a file offset, which is also the size of the value field of a directory entry.
  unsigned offsetBytes() const { return bigTiff ? 8 : 4; }
  /// Bytes of the number of entries at the beginning of a directory.
  unsigned countBytes() const { return bigTiff ? 8 : 2; }
  unsigned entryBytes() const { return bigTiff ? 20 : 12; }
  /// Position of the value, or of its offset, in an entry.
  unsigned valuePlace() const { return bigTiff ? 12 : 8; }
  /// Position in the header of the offset of the first directory.
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

/// Tags of TIFF 6.0 and its registered extensions.
namespace tag {

constexpr std::uint16_t kNewSubfileType = 254;
constexpr std::uint16_t kImageWidth = 256;
constexpr std::uint16_t kImageLength = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kCompression = 259;
constexpr std::uint16_t kPhotometric = 262;
constexpr std::uint16_t kFillOrder = 266;
constexpr std::uint16_t kStripOffsets = 273;
constexpr std::uint16_t kOrientation = 274;
constexpr std::uint16_t kSamplesPerPixel = 277;
constexpr std::uint16_t kRowsPerStrip = 278;
constexpr std::uint16_t kStripByteCounts = 279;
constexpr std::uint16_t kXResolution = 282;
constexpr std::uint16_t kYResolution = 283;
constexpr std::uint16_t kPlanarConfiguration = 284;
constexpr std::uint16_t kT4Options = 292;
constexpr std::uint16_t kT6Options = 293;
constexpr std::uint16_t kResolutionUnit = 296;
constexpr std::uint16_t kPageNumber = 297;
constexpr std::uint16_t kSoftware = 305;
constexpr std::uint16_t kPredictor = 317;
constexpr std::uint16_t kColorMap = 320;
constexpr std::uint16_t kTileOffsets = 324;
constexpr std::uint16_t kTileByteCounts = 325;
constexpr std::uint16_t kSubIfds = 330;
constexpr std::uint16_t kExtraSamples = 338;
constexpr std::uint16_t kGlobalParametersIfd = 400;
constexpr std::uint16_t kJpegInterchangeFormat = 513;
constexpr std::uint16_t kJpegInterchangeFormatLength = 514;
constexpr std::uint16_t kJpegQTables = 519;
constexpr std::uint16_t kJpegDcTables = 520;
constexpr std::uint16_t kJpegAcTables = 521;
constexpr std::uint16_t kYCbCrSubSampling = 530;
constexpr std::uint16_t kYCbCrPositioning = 531;
constexpr std::uint16_t kReferenceBlackWhite = 532;
constexpr std::uint16_t kExifIfd = 34665;
constexpr std::uint16_t kIccProfile = 34675;
constexpr std::uint16_t kGpsIfd = 34853;
constexpr std::uint16_t kInteroperabilityIfd = 40965;

}  // namespace tag

}  // namespace orvane
