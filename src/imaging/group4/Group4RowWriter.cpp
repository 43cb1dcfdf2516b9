#include "imaging/group4/Group4RowWriter.h"

#include <algorithm>
#include <array>

#include "imaging/group4/group4_codes.h"
#include "imaging/raster/bit_streams.h"

namespace orvane::group4 {
namespace {

constexpr auto kVerticalCodes = [] {
  std::array<Code, kVertical.size()> codes{};
  std::ranges::transform(kVertical, codes.begin(), codeOf);
  return codes;
}();

// A row takes at most 7 bits for a changing element (or 6 for a pixel in runs), and 4 for every two
// elements that it passes: less than 10 bits for a pixel.
std::size_t mostRowBytes(std::int32_t width) {
  return static_cast<std::size_t>(width) * 10 / 8 + 64;
}

template <typename Bits>
void put(Bits& bits, Code code) {
  bits.put(code.bits, code.length);
}

void putRun(BitPen& bits, bool black, std::int32_t run) {
  const RunCodes& codes = kRunCodes[black];
  const auto makeUp = [&codes](std::int32_t units) {
    return codes[static_cast<std::size_t>(kMakeUpUnit + units - 1)];
  };
  for (; run >= kLongestMakeUp + kMakeUpUnit; run -= kLongestMakeUp) {
    put(bits, makeUp(kLongestMakeUp / kMakeUpUnit));
  }
  if (run >= kMakeUpUnit) {
    put(bits, makeUp(run / kMakeUpUnit));
    run %= kMakeUpUnit;
  }
  put(bits, codes[static_cast<std::size_t>(run)]);
}

}  // namespace

void Group4RowWriter::writeRow(const ChangingElements& reference, const ChangingElements& row) {
  const std::int32_t width = row.width();
  bits_.reserve(mostRowBytes(width));
  BitPen bits = bits_.pen();
  const std::int32_t* b1 = reference.first();
  const std::int32_t* a1 = row.first();
  std::int32_t a0 = 0;
  bool black = false;
  for (;;) {
    if (b1[1] < *a1) {
      put(bits, codeOf(kPass));
      a0 = b1[1];
      b1 += 2;
      continue;
    }
    const std::int32_t offset = *a1 - *b1;
    if (-kMaxOffset <= offset && offset <= kMaxOffset) {
      put(bits, kVerticalCodes[verticalIndex(offset)]);
      if (*a1 == width) break;
      a0 = *a1++;
      black = !black;
      b1 += b1[-1] > a0 ? -1 : 1;
    } else {
      put(bits, codeOf(kHorizontal));
      putRun(bits, black, a1[0] - a0);
      putRun(bits, !black, a1[1] - a1[0]);
      if (a1[1] == width) break;
      a0 = a1[1];
      a1 += 2;
    }
    while (*b1 <= a0) b1 += 2;
  }
  bits_.pen() = bits;
}

void Group4RowWriter::copyRows(ByteView strip, std::size_t from, std::size_t to) {
  bits_.reserve((to - from) / 8 + 8);
  BitReader source(strip.subspan(from / 8));
  source.refill();
  source.skip(from % 8);
  while (from < to) {
    const auto count = static_cast<unsigned>(std::min<std::size_t>(to - from, 32));
    source.refill();
    bits_.put(static_cast<std::uint32_t>(source.bits() >> (64 - count)), count);
    source.skip(count);
    from += count;
  }
}

void Group4RowWriter::repeatRow(const ChangingElements& reference, const ChangingElements& row,
                                std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) writeRow(i == 0 ? reference : row, row);
}

Bytes Group4RowWriter::finish() {
  bits_.reserve(8);
  put(bits_, codeOf(kEndOfLine));
  put(bits_, codeOf(kEndOfLine));
  return bits_.take();
}

void endStrip(Bytes& strip, std::size_t bits) {
  const auto bitAt = [](std::size_t bit) { return static_cast<std::uint8_t>(0x80 >> bit % 8); };
  strip.resize(bits / 8 + 1);
  strip.back() &= static_cast<std::uint8_t>(0xFF00 >> bits % 8);
  strip.resize((bits + 2 * kEndOfLine.size() + 7) / 8);
  for (std::size_t end = bits + kEndOfLine.size(), i = 0; i < 2; ++i, end += kEndOfLine.size()) {
    strip[(end - 1) / 8] |= bitAt(end - 1);
  }
}

}  // namespace orvane::group4
