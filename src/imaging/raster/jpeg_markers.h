#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/ByteSource.h"

/// Markers of a JPEG stream (ITU-T T.81 table B.1), each after a byte 0xFF.

namespace orvane::jpeg_marker {

inline constexpr std::uint8_t kFrameBaseline = 0xC0;
inline constexpr std::uint8_t kFrameExtended = 0xC1;
inline constexpr std::uint8_t kHuffmanTables = 0xC4;
inline constexpr std::uint8_t kRestart0 = 0xD0;  ///< the first of eight
inline constexpr std::uint8_t kStartOfImage = 0xD8;
inline constexpr std::uint8_t kEndOfImage = 0xD9;
inline constexpr std::uint8_t kStartOfScan = 0xDA;
inline constexpr std::uint8_t kQuantisationTables = 0xDB;
inline constexpr std::uint8_t kRestartInterval = 0xDD;
inline constexpr std::uint8_t kApplication0 = 0xE0;  ///< the first of sixteen
inline constexpr std::uint8_t kAdobe = 0xEE;
inline constexpr std::uint8_t kComment = 0xFE;

}  // namespace orvane::jpeg_marker

namespace orvane {

/// The content of a marker segment, after its length: a range of the stream, which may end before.
struct JpegSegment {
  std::uint64_t at = 0;
  std::size_t length = 0;
};

/// Walks the markers of a JPEG stream and their segments (T.81 annex B). Nothing is thrown: what
/// to make of other data is up to the caller.
class JpegMarkers {
 public:
  /// Begins at `position` of `stream`, which outlives the object.
  JpegMarkers(const ByteSource& stream, std::uint64_t position)
      : stream_(stream), position_(position) {}

  /// The position after what has been taken.
  std::uint64_t position() const { return position_; }
  bool hasEnded() const { return position_ >= stream_.size(); }

  /// Takes a marker, with the fill bytes before it. Nothing if other data comes next, which is left
  /// where it is, or if the stream ends.
  std::optional<std::uint8_t> takeMarker();

  /// Takes the segment that comes next. Nothing if its length is impossible, or if the stream ends
  /// within the length.
  std::optional<JpegSegment> takeSegment();

  /// Goes to the next byte 0xFF, or to the end of the stream.
  void skipData();

 private:
  const ByteSource& stream_;
  std::uint64_t position_;
};

}  // namespace orvane
