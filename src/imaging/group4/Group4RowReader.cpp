#include "imaging/group4/Group4RowReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

#include "imaging/group4/group4_codes.h"

namespace orvane::group4 {
namespace {

// Four positions side by side, handled by one instruction where the machine can.
using Lanes = std::int32_t __attribute__((vector_size(16)));
using LanePairs = std::int64_t __attribute__((vector_size(16)));
using LaneOffsets = std::int16_t __attribute__((vector_size(2 * CodeGroup::kMostVertical)));

constexpr std::array<Lanes, CodeGroup::kMostVertical + 1> kLanesInUse = {
    {{0, 0, 0, 0}, {-1, 0, 0, 0}, {-1, -1, 0, 0}, {-1, -1, -1, 0}, {-1, -1, -1, -1}}};

Lanes loadLanes(const std::int32_t* at) {
  Lanes lanes;
  std::memcpy(&lanes, at, sizeof lanes);
  return lanes;
}

// One row while it is read. Every step is inlined by force: only then does the state stay in
// registers, and the walk takes two thirds of the time. The names are those of T.6: a0 is where
// coding has come to, a1 the next changing element of this row, b1 the first one of the reference
// row behind a0 and of the colour opposite to it.
class RowWalk {
 public:
  RowWalk(const BitReader& bits, std::int32_t width) : bits_(bits), width_(width) {}

  RowFault readRow(const ChangingElements& reference, ChangingElements& row) {
    b1_ = reference.first();
    first_ = a1_ = row.first();
    a0_ = -1;
    complete_ = false;
    do {
      bits_.refill();
    } while (takeGroup());
    row.finish(static_cast<std::size_t>(a1_ - first_));
    if (fault_ == RowFault::None && bits_.overran()) return RowFault::DataEnds;
    return fault_;
  }

  // Behind a blank row each blank one is a single bit. Answers how many of them, up to `most`,
  // follow at once.
  std::uint32_t skipBlankRows(std::uint32_t most) {
    bits_.refill();
    const auto ones = static_cast<unsigned>(std::countl_one(bits_.bits()));
    const unsigned rows = std::min({ones, bits_.ready() - 1, most});
    bits_.skip(rows);
    return rows;
  }

  const BitReader& bits() const { return bits_; }

 private:
  static_assert(kGroupBits + 2 * kRunBits <= 56, "one refill is enough for a group and two runs");

  // Takes the codes of a group as far as each vertical one moves b1 on by one element, which is the
  // rule: no row's end, and no neighbour so near that b1 has to skip or to step back. False when
  // the row is at its end, or at a fault.
  [[gnu::always_inline]] bool takeGroup() {
    const CodeGroup& group = kGroups[bits_.bits() >> (64 - kGroupBits)];
    LaneOffsets offsets;
    std::memcpy(&offsets, group.offsets.data(), sizeof offsets);
    const Lanes at = loadLanes(b1_) + __builtin_convertvector(offsets, Lanes);
    const Lanes before = __builtin_shufflevector(at, Lanes{a0_}, 4, 0, 1, 2);
    const Lanes exception = (at >= loadLanes(b1_ + 1)) | (at < loadLanes(b1_ - 1)) | (at <= before);
    std::memcpy(a1_, &at, sizeof at);
    const auto inUse = (LanePairs)(exception & kLanesInUse[group.verticals]);
    if ((inUse[0] | inUse[1]) != 0) return takeUpToException(group, inUse);
    a1_ += group.verticals;
    b1_ += group.moves;
    // Without a pass code -1, in place of a branch that would be guessed wrongly too often.
    const std::int32_t passedTo = b1_[-1] | (static_cast<std::int32_t>(group.passes()) - 1);
    a0_ = std::max(std::max(a0_, a1_[-1]), passedTo);
    bits_.skip(group.length);
    if (group.horizontal) [[unlikely]]
      return takeHorizontal();
    if (a0_ == width_) return fail(RowFault::TooLong);
    return group.length != 0 || fail(faultOfMode(bits_, a0_ < 0));
  }

  [[gnu::always_inline]] bool takeUpToException(const CodeGroup& group, LanePairs exception) {
    const auto lanes = static_cast<std::uint64_t>(exception[0] != 0 ? exception[0] : exception[1]);
    const int plain = (exception[0] != 0 ? 0 : 2) + std::countr_zero(lanes) / 32;
    a1_ += plain;
    b1_ += plain;
    a0_ = std::max(a0_, a1_[-1]);
    bits_.skip(group.lengths[static_cast<std::size_t>(plain)]);
    return takeVertical(group.offsets[static_cast<std::size_t>(plain)]);
  }

  [[gnu::always_inline]] bool takeVertical(std::int32_t offset) {
    const std::int32_t at = *b1_ + offset;
    if (at >= width_) return at == width_ ? complete() : fail(RowFault::TooLong);
    if (at <= a0_) return fail(RowFault::Backwards);
    *a1_++ = a0_ = at;
    b1_ += b1_[-1] > at ? -1 : 1;
    return advanceB1();
  }

  // Most runs end in their first code, so both are looked up before either is judged.
  [[gnu::always_inline]] bool takeHorizontal() {
    const bool black = ((a1_ - first_) & 1) != 0;
    const RunEntry first = kRuns[black][bits_.bits() >> (64 - kRunBits)];
    const RunEntry second = kRuns[!black][bits_.bits() << lengthOf(first) >> (64 - kRunBits)];
    if (!endsRun(first) || !endsRun(second)) return takeLongRuns(black);
    bits_.skip(lengthOf(first) + lengthOf(second));
    return takeRuns(runOf(first), runOf(second));
  }

  [[gnu::always_inline]] bool takeLongRuns(bool black) {
    const std::int32_t first = readRun(kRuns[black]);
    if (first == kBadRun) return fail(faultOfRun(bits_));
    const std::int32_t second = readRun(kRuns[!black]);
    if (second == kBadRun) return fail(faultOfRun(bits_));
    return takeRuns(first, second);
  }

  [[gnu::always_inline]] bool takeRuns(std::int32_t first, std::int32_t second) {
    const std::int32_t at = std::max(a0_, 0) + first;
    const std::int32_t next = at + second;
    if (next > width_) return fail(RowFault::TooLong);
    if (at <= a0_ || (next == at && at != width_)) return fail(RowFault::Backwards);
    *a1_ = at;
    a1_[1] = a0_ = next;
    if (next == width_) {
      a1_ += at < width_ ? 1 : 0;
      return complete();
    }
    a1_ += 2;
    return advanceB1();
  }

  [[gnu::always_inline]] bool advanceB1() {
    const std::ptrdiff_t passed = (b1_[0] <= a0_) + (b1_[2] <= a0_);
    b1_ += 2 * passed;
    while (*b1_ <= a0_) b1_ += 2;
    return true;
  }

  [[gnu::always_inline]] bool complete() {
    complete_ = true;
    return false;
  }

  [[gnu::always_inline]] bool fail(RowFault fault) {
    fault_ = fault;
    return false;
  }

  static constexpr std::int32_t kBadRun = -1;

  // Reads make-up codes and the code that ends them; stops early once the run is over the width.
  [[gnu::always_inline]] std::int32_t readRun(const RunTable& table) {
    std::int32_t run = 0;
    while (run <= width_) {
      bits_.refill();
      const RunEntry entry = table[bits_.bits() >> (64 - kRunBits)];
      if (entry == 0) return kBadRun;
      bits_.skip(lengthOf(entry));
      run += runOf(entry);
      if (endsRun(entry)) break;
    }
    return run;
  }

  BitReader bits_;
  const std::int32_t width_;
  const std::int32_t* b1_ = nullptr;
  std::int32_t* first_ = nullptr;
  std::int32_t* a1_ = nullptr;
  std::int32_t a0_ = -1;
  bool complete_ = false;
  RowFault fault_ = RowFault::None;
};

bool nextIs(const BitReader& bits, std::string_view text) {
  const Code code = codeOf(text);
  return bits.bits() >> (64 - code.length) == code.bits;
}

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

StripEnd readStripEnd(BitReader bits) {
  while (!bits.onlyZerosLeft()) {
    if (!skipEndOfLine(bits)) return StripEnd::Data;
    bits.refill();
    if (nextIs(bits, kEndOfLine)) return StripEnd::EndOfBlock;
  }
  return StripEnd::Padding;
}

RowFault faultOfMode(BitReader bits, bool rowBegins) {
  constexpr std::string_view kEndOfLineZeros = kEndOfLine.substr(0, kEndOfLine.size() - 1);
  if (bits.onlyZerosLeft()) return RowFault::DataEnds;
  if (nextIs(bits, kExtension)) return RowFault::ExtensionCode;
  return rowBegins && nextIs(bits, kEndOfLineZeros) ? RowFault::EndOfBlock : RowFault::BadCode;
}

RowFault faultOfRun(BitReader bits) {
  return bits.onlyZerosLeft() ? RowFault::DataEnds : RowFault::BadCode;
}

RowFault Group4RowReader::readRows(std::uint32_t count, ChangingElements& last,
                                   ChangingElements& spare) {
  RowWalk walk(bits_, last.width());
  RowFault fault = RowFault::None;
  rowsRead_ += count;
  while (count > 0 && fault == RowFault::None) {
    if (last.isBlank()) count -= walk.skipBlankRows(count);
    if (count == 0) break;
    fault = walk.readRow(last, spare);
    std::swap(last, spare);
    --count;
  }
  rowsRead_ -= count;
  bits_ = walk.bits();
  return fault;
}

std::size_t Group4RowReader::mostChanges(std::int32_t width, std::size_t stripBytes) {
  return std::min(static_cast<std::size_t>(width), stripBytes * 8) + 2;
}

}  // namespace orvane::group4
