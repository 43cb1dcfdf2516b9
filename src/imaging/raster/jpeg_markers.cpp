#include "imaging/raster/jpeg_markers.h"

#include <algorithm>
#include <array>
#include <span>

namespace orvane {
namespace {

constexpr std::uint8_t kMark = 0xFF;
using Piece = std::array<std::uint8_t, 64>;

}  // namespace

// The byte after the last fill byte is the marker; a mark is needed before it.
std::optional<std::uint8_t> JpegMarkers::takeMarker() {
  bool isMarked = false;
  Piece piece;
  while (const std::size_t size = stream_.readAt(position_, piece)) {
    const auto read = std::span(piece).first(size);
    const auto other = std::ranges::find_if(read, [](auto byte) { return byte != kMark; });
    isMarked = isMarked || other != read.begin();
    if (!isMarked) return std::nullopt;
    position_ += static_cast<std::uint64_t>(other - read.begin());
    if (other == read.end()) continue;
    ++position_;
    return *other;
  }
  return std::nullopt;
}

std::optional<JpegSegment> JpegMarkers::takeSegment() {
  constexpr std::size_t kLengthBytes = 2;  // counted in the length
  std::array<std::uint8_t, kLengthBytes> bytes{};
  if (stream_.readAt(position_, bytes) < bytes.size()) return std::nullopt;
  const std::size_t length = std::size_t{bytes[0]} << 8 | bytes[1];
  if (length < kLengthBytes) return std::nullopt;
  const JpegSegment segment{position_ + kLengthBytes, length - kLengthBytes};
  position_ += length;
  return segment;
}

void JpegMarkers::skipData() {
  Piece piece;
  while (const std::size_t size = stream_.readAt(position_, piece)) {
    const auto read = std::span(piece).first(size);
    const auto mark = std::ranges::find(read, kMark);
    position_ += static_cast<std::uint64_t>(mark - read.begin());
    if (mark != read.end()) return;
  }
}

}  // namespace orvane
