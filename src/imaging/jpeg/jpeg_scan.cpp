#include "imaging/jpeg/jpeg_scan.h"

#include <algorithm>
#include <cstring>

#include "imaging/jpeg/jpeg_header.h"

namespace orvane {
namespace {

// The place of the next 0xFF, or the end.
const std::uint8_t* findFF(const std::uint8_t* at, const std::uint8_t* end) {
  const void* found =
      at == end ? nullptr : std::memchr(at, 0xFF, static_cast<std::size_t>(end - at));
  return found == nullptr ? end : static_cast<const std::uint8_t*>(found);
}

}  // namespace

ByteView EntropySegments::next() {
  segment_.clear();
  segment_.reserve(data_.size());
  const std::uint8_t* at = data_.data();
  const std::uint8_t* const end = at + data_.size();
  for (;;) {
    const std::uint8_t* const ff = findFF(at, end);
    const bool stuffed = ff != end && ff + 1 != end && ff[1] == 0;
    segment_.insert(segment_.end(), at, ff + (stuffed ? 1 : 0));
    at = ff + (stuffed ? 2 : 0);
    if (!stuffed) break;
  }
  data_ = data_.subspan(static_cast<std::size_t>(at - data_.data()));
  return segment_;
}

bool EntropySegments::atMarker(std::uint8_t marker) const {
  const auto code = std::ranges::find_if(data_, [](std::uint8_t byte) { return byte != 0xFF; });
  return code != data_.end() && code != data_.begin() && *code == marker;
}

bool EntropySegments::takeRestart() {
  if (!atMarker(static_cast<std::uint8_t>(jpeg_marker::kRestart0 + restarts_ % 8))) return false;
  ++restarts_;
  const auto code = std::ranges::find_if(data_, [](std::uint8_t byte) { return byte != 0xFF; });
  data_ = data_.subspan(static_cast<std::size_t>(code - data_.begin()) + 1);
  return true;
}

bool EntropySegments::atEndOfImage() const {
  return atMarker(jpeg_marker::kEndOfImage);
}

void appendStuffed(Bytes& stream, ByteView bytes) {
  const std::uint8_t* at = bytes.data();
  const std::uint8_t* const end = at + bytes.size();
  while (at != end) {
    const std::uint8_t* const ff = findFF(at, end);
    stream.insert(stream.end(), at, ff);
    if (ff == end) return;
    stream.push_back(0xFF);
    stream.push_back(0);
    at = ff + 1;
  }
}

}  // namespace orvane
