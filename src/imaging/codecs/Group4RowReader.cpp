#include "imaging/codecs/Group4RowReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "imaging/codecs/group4_tables.h"

namespace orvane::group4 {
namespace {

// Four positions side by side, handled by one instruction where the machine can.
using Lanes = std::int32_t __attribute__((vector_size(16)));
using LanePairs = std::int64_t __attribute__((vector_size(16)));
using LaneOffsets = std::int8_t __attribute__((vector_size(VerticalGroup::kMost)));

constexpr std::array<Lanes, VerticalGroup::kMost + 1> kLanesInUse = {
    {{0, 0, 0, 0}, {-1, 0, 0, 0}, {-1, -1, 0, 0}, {-1, -1, -1, 0}, {-1, -1, -1, -1}}};

Lanes loadLanes(const std::int32_t* at) {
  Lanes lanes;
  std::memcpy(&lanes, at, sizeof lanes);
  return lanes;
}

// One row while it is read. The names are those of T.6: a0 is where coding has come to, a1 the next
// changing element of this row, b1 the first one of the reference row behind a0 and of the colour
// opposite to it.
class RowWalk {
 public:
  RowWalk(const BitReader& bits, const ChangingElements& reference, ChangingElements& row)
      : bits_(bits),
        width_(row.width()),
        b1_(reference.first()),
        first_(row.first()),
        a1_(first_) {}

  RowFault walk() {
    while (!complete_) {
      bits_.refill();
      if (takeVerticalGroup()) continue;
      const RowFault fault = takeCode();
      if (fault != RowFault::None) return fault;
    }
    return bits_.overran() ? RowFault::DataEnds : RowFault::None;
  }

  const BitReader& bits() const { return bits_; }
  std::size_t changes() const { return static_cast<std::size_t>(a1_ - first_); }

 private:
  // Takes up to four vertical codes at once where each of them moves b1 on by one element, which is
  // the rule: no row's end, and no neighbour so near that b1 has to skip or to step back.
  bool takeVerticalGroup() {
    const VerticalGroup& group = kGroups[bits_.bits() >> (64 - kGroupBits)];
    LaneOffsets offsets;
    std::memcpy(&offsets, group.offsets.data(), sizeof offsets);
    const Lanes at = loadLanes(b1_) + __builtin_convertvector(offsets, Lanes);
    const Lanes before = __builtin_shufflevector(at, Lanes{a0_}, 4, 0, 1, 2);
    const Lanes exception = (at >= loadLanes(b1_ + 1)) | (at < loadLanes(b1_ - 1)) | (at <= before);
    std::memcpy(a1_, &at, sizeof at);
    const auto inUse = (LanePairs)(exception & kLanesInUse[group.count]);
    if (group.count == 0 || (inUse[0] | inUse[1]) != 0) return false;
    bits_.skip(group.length);
    b1_ += group.count;
    a1_ += group.count;
    a0_ = a1_[-1];
    return true;
  }

  RowFault takeCode() {
    const ModeEntry entry = kModes[bits_.bits() >> (64 - kModeBits)];
    if (entry.mode == Mode::None) return faultOfBadMode();
    bits_.skip(entry.length);
    if (entry.mode == Mode::Vertical) return takeVertical(entry.offset);
    if (entry.mode == Mode::Horizontal) return takeHorizontal();
    return takePass();
  }

  RowFault takeVertical(std::int32_t offset) {
    const std::int32_t at = *b1_ + offset;
    if (at <= a0_) return RowFault::Backwards;
    if (at > width_) return RowFault::TooLong;
    if (at == width_) return completeRow();
    *a1_++ = a0_ = at;
    ++b1_;
    if (b1_[-2] > a0_) {
      b1_ -= 2;
    } else {
      advanceB1();
    }
    return RowFault::None;
  }

  RowFault takeHorizontal() {
    const bool black = ((a1_ - first_) & 1) != 0;
    const std::int32_t start = std::max(a0_, 0);
    const std::int32_t firstRun = readRun(black, width_ - start);
    if (firstRun == kBadRun) return faultOfBadRun();
    const std::int32_t at = start + firstRun;
    if (at > width_) return RowFault::TooLong;
    if (at <= a0_) return RowFault::Backwards;
    const std::int32_t secondRun = readRun(!black, width_ - at);
    if (secondRun == kBadRun) return faultOfBadRun();
    const std::int32_t next = at + secondRun;
    if (next > width_) return RowFault::TooLong;
    if (at == width_) return completeRow();
    if (next == at) return RowFault::Backwards;
    *a1_++ = at;
    if (next == width_) return completeRow();
    *a1_++ = a0_ = next;
    advanceB1();
    return RowFault::None;
  }

  RowFault takePass() {
    const std::int32_t b2 = b1_[1];
    if (b2 == width_) return RowFault::TooLong;
    a0_ = b2;
    b1_ += 2;
    return RowFault::None;
  }

  void advanceB1() {
    while (*b1_ <= a0_) b1_ += 2;
  }

  RowFault completeRow() {
    complete_ = true;
    return RowFault::None;
  }

  static constexpr std::int32_t kBadRun = -1;

  std::int32_t readRun(bool black, std::int32_t most) {
    return black ? readRun<kBlackBits>(kBlackTable, most) : readRun<kWhiteBits>(kWhiteTable, most);
  }

  // Reads make-up codes and the code that ends them; stops early once the run is over `most`.
  template <unsigned kBits>
  std::int32_t readRun(const std::array<RunEntry, 1u << kBits>& table, std::int32_t most) {
    std::int32_t run = 0;
    while (run <= most) {
      bits_.refill();
      const RunEntry entry = table[bits_.bits() >> (64 - kBits)];
      if (entry == 0) return kBadRun;
      bits_.skip(entry & 15u);
      const std::int32_t part = entry >> 4;
      run += part;
      if (part < kMakeUpUnit) break;
    }
    return run;
  }

  bool nextIs(std::string_view text) const {
    const Code code = codeOf(text);
    return bits_.bits() >> (64 - code.length) == code.bits;
  }

  RowFault faultOfBadMode() const {
    if (bits_.onlyZerosLeft()) return RowFault::DataEnds;
    if (nextIs(kExtension)) return RowFault::ExtensionCode;
    return nextIs(kEndOfLine) && a0_ < 0 ? RowFault::EndOfBlock : RowFault::BadCode;
  }

  RowFault faultOfBadRun() const {
    return bits_.onlyZerosLeft() ? RowFault::DataEnds : RowFault::BadCode;
  }

  BitReader bits_;
  const std::int32_t width_;
  const std::int32_t* b1_;
  std::int32_t* const first_;
  std::int32_t* a1_;
  std::int32_t a0_ = -1;
  bool complete_ = false;
};

// Skips an end-of-line code with any number of zeros before it, in bits that are not all zero.
bool skipEndOfLine(BitReader& bits) {
  std::size_t zeros = 0;
  for (;;) {
    bits.refill();
    const auto ahead = static_cast<unsigned>(std::countl_zero(bits.bits()));
    if (ahead < bits.ready()) {
      bits.skip(ahead + 1);
      return zeros + ahead >= kEndOfLine.size() - 1;
    }
    zeros += bits.ready();
    bits.skip(bits.ready());
  }
}

}  // namespace

std::string describe(RowFault fault) {
  switch (fault) {
    case RowFault::None:
      return "no fault";
    case RowFault::BadCode:
      return "bad code";
    case RowFault::ExtensionCode:
      return "uncompressed mode is not supported";
    case RowFault::EndOfBlock:
      return "the block ends before it";
    case RowFault::DataEnds:
      return "the data ends";
    case RowFault::TooLong:
      return "a run passes the width";
    case RowFault::Backwards:
      return "a run goes backwards";
  }
  return "unknown fault";
}

RowFault Group4RowReader::readRow(const ChangingElements& reference, ChangingElements& row) {
  RowWalk walk(bits_, reference, row);
  const RowFault fault = walk.walk();
  bits_ = walk.bits();
  row.finish(walk.changes());
  return fault;
}

bool Group4RowReader::endsCleanly() {
  constexpr Code endOfLine = codeOf(kEndOfLine);
  constexpr std::uint64_t endOfBlock = endOfLine.bits << endOfLine.length | endOfLine.bits;
  bits_.refill();
  if (bits_.bits() >> (64 - 2 * endOfLine.length) != endOfBlock) return bits_.onlyZerosLeft();
  bits_.skip(2 * endOfLine.length);
  while (!bits_.onlyZerosLeft()) {
    if (!skipEndOfLine(bits_)) return false;
  }
  return true;
}

std::size_t Group4RowReader::mostChanges(std::int32_t width, std::size_t stripBytes) {
  return std::min(static_cast<std::size_t>(width), stripBytes * 8) + 2;
}

}  // namespace orvane::group4
