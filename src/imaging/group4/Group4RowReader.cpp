#include "imaging/group4/Group4RowReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/group4/group4_codes.h"

// How a row of eight pixels is read, in the terms of T.6. The reference line is the row before;
// white is '.', black is '#', and the elements are the positions where the colour changes.
//
//   pixel            0 1 2 3 4 5 6 7      changing elements
//   reference line   . # # . . # # .      1 3 5 7
//   coding line      . . # # . . . .      2 4
//
// a0 is the position that coding has come to, a1 the next element of the coding line, b1 the first
// element of the reference line to the right of a0 whose change is to the colour opposite to that
// of a0, b2 the element after b1. Elements after the last one are at the width, here 8.
//
//   a0 colour  b1 b2   code             effect
//   -  white   1  3    011 (VR1)        a1 = b1 + 1 = 2
//   2  black   3  5    011 (VR1)        a1 = b1 + 1 = 4
//   4  white   5  7    0001 (pass)      the run goes on past b2: a0 = 7, still white
//   7  white   8  8    1 (V0)           a1 = b1 = 8, the width: the row is complete
//
// An element more than 3 pixels from b1 is written in horizontal mode: 001 and the lengths of the
// next two runs. The reference line itself, coded against a white line, begins with 001 for white 1
// and black 2; its other elements are at most 3 pixels from b1 = 8: VL3, VL1 and V0.
//
// After a vertical code b1 is the next element of the reference line, unless elements are so near
// to each other that it must skip or step back. After a pass code it is two elements further on.

namespace orvane::group4 {
namespace {

bool nextIs(const BitReader& bits, std::string_view text) {
  const Code code = codeOf(text);
  return bits.bits() >> 1 >> (63 - code.length) == code.bits;  // also defined for no bits at all
}

// Skips an end-of-line code and any zeros before it; false for another code. The bits left must not
// all be zero.
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

// Classifies what is left of a strip. Zero bits before an end-of-block belong to it.
StripEnd readStripEnd(BitReader bits) {
  while (!bits.onlyZerosLeft()) {
    if (!skipEndOfLine(bits)) return StripEnd::Data;
    bits.refill();
    if (nextIs(bits, kEndOfLine)) return StripEnd::EndOfBlock;
  }
  return StripEnd::Padding;
}

// The fault where no mode code begins. `rowBegins` is true while the row has no code yet.
RowFault faultOfMode(const BitReader& bits, bool rowBegins) {
  constexpr std::string_view kEndOfLineZeros = kEndOfLine.substr(0, kEndOfLine.size() - 1);
  if (bits.onlyZerosLeft()) return RowFault::DataEnds;
  if (nextIs(bits, kExtension)) return RowFault::ExtensionCode;
  return rowBegins && nextIs(bits, kEndOfLineZeros) ? RowFault::EndOfBlock : RowFault::BadCode;
}

// The fault where no run code begins.
RowFault faultOfRun(const BitReader& bits) {
  return bits.onlyZerosLeft() ? RowFault::DataEnds : RowFault::BadCode;
}

// Four positions that one vector instruction handles.
using Lanes = std::int32_t __attribute__((vector_size(16)));
using LanePairs = std::int64_t __attribute__((vector_size(16)));
using LaneOffsets = std::int16_t __attribute__((vector_size(2 * CodeGroup::kMostVertical)));

constexpr std::array<Lanes, CodeGroup::kMostVertical + 1> kLanesInUse = {
    {{0, 0, 0, 0}, {-1, 0, 0, 0}, {-1, -1, 0, 0}, {-1, -1, -1, 0}, {-1, -1, -1, -1}}};

// The first lane of a pair is its low half on a little-endian machine, its high half on others.
int firstLaneInUse(std::uint64_t pair) {
  constexpr bool kIsLow = std::endian::native == std::endian::little;
  return (kIsLow ? std::countr_zero(pair) : std::countl_zero(pair)) / 32;
}

Lanes loadLanes(const std::int32_t* at) {
  Lanes lanes;
  std::memcpy(&lanes, at, sizeof lanes);
  return lanes;
}

// Reads one row. Every step is inlined by force: only then is the state kept in registers, and
// reading takes two thirds of the time.
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

  // After a blank row each blank row is a single bit. Skips up to `most` of them that are in the
  // buffered bits; returns their number.
  std::uint32_t skipBlankRows(std::uint32_t most) {
    bits_.refill();
    const auto ones = static_cast<unsigned>(std::countl_one(bits_.bits()));
    const unsigned rows = std::min({ones, bits_.ready() - 1, most});
    bits_.skip(rows);
    return rows;
  }

  const BitReader& bits() const { return bits_; }

 private:
  static_assert(kGroupBits + 2 * kRunBits <= 56, "one refill covers a group and two runs");

  // Takes the codes of a group up to the first vertical one that completes the row or after which
  // b1 must skip or step back; such codes are exceptions. False when the row is complete or faulty.
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
    // -1 without a pass code: a branch would be mispredicted too often.
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
    const int plain = (exception[0] != 0 ? 0 : 2) + firstLaneInUse(lanes);
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

  // Most runs have a single code, so both runs are looked up before either is checked.
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

  // Reads make-up codes and the terminating code; stops early when the run exceeds the width.
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

// The changing elements of a row, after one at 0 to which b1 may step back from the first. Two of
// them may be equal. All elements after the last are at the row's width.
class LenientRow {
 public:
  explicit LenientRow(std::int32_t width) : width_(width) {}

  std::int32_t width() const { return width_; }
  std::size_t changes() const { return positions_.size() - 1; }
  std::int32_t operator[](std::size_t index) const {
    return index < positions_.size() ? positions_[index] : width_;
  }

  void clear() { positions_.resize(1); }
  void add(std::int32_t position) { positions_.push_back(position); }

 private:
  std::int32_t width_;
  std::vector<std::int32_t> positions_{0};
};

// Reads one row, as RowWalk does but one code at a time.
class LenientRowWalk {
 public:
  LenientRowWalk(BitReader& bits, const LenientRow& reference, LenientRow& row)
      : bits_(bits), reference_(reference), row_(row), width_(row.width()) {
    row_.clear();
  }

  RowFault read() {
    // Runs of length 0 do not advance, so their number is limited.
    const std::size_t mostChanges = 2 * (static_cast<std::size_t>(width_) + 32);
    RowFault fault = RowFault::None;
    for (bool begins = true; a0_ < width_ && fault == RowFault::None; begins = false) {
      fault = takeCode(begins);
      if (a0_ > width_ || row_.changes() > mostChanges) fault = RowFault::TooLong;
    }
    return fault;
  }

 private:
  RowFault takeCode(bool begins) {
    bits_.refill();
    const ModeEntry code = kModes[bits_.bits() >> (64 - kModeBits)];
    if (code.mode == Mode::None) return faultOfMode(bits_, begins);
    bits_.skip(code.length);
    if (row_.changes() > 0) {
      while (reference_[b1_] <= a0_ && reference_[b1_] < width_) b1_ += 2;
    }
    switch (code.mode) {
      case Mode::Pass:
        a0_ = reference_[b1_ + 1];
        b1_ += 2;
        return RowFault::None;
      case Mode::Horizontal:
        return takeRuns();
      default:
        return takeVertical(code.offset);
    }
  }

  RowFault takeVertical(std::int32_t offset) {
    const std::int32_t at = reference_[b1_] + offset;
    if (at < a0_) return RowFault::Backwards;
    row_.add(at);
    a0_ = at;
    b1_ = offset < 0 ? b1_ - 1 : b1_ + 1;
    return RowFault::None;
  }

  RowFault takeRuns() {
    for (int i = 0; i < 2; ++i) {
      const RunTable& table = kRuns[row_.changes() % 2];
      RunEntry entry = 0;
      do {
        bits_.refill();
        entry = table[bits_.bits() >> (64 - kRunBits)];
        if (entry == 0) return faultOfRun(bits_);
        bits_.skip(lengthOf(entry));
        a0_ += runOf(entry);
        if (a0_ > width_) return RowFault::TooLong;
      } while (!endsRun(entry));
      row_.add(a0_);
    }
    return RowFault::None;
  }

  BitReader& bits_;
  const LenientRow& reference_;
  LenientRow& row_;
  const std::int32_t width_;
  std::size_t b1_ = 1;
  std::int32_t a0_ = 0;
};

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

RowsEnd Group4RowReader::end(RowFault fault) const {
  return {rowsRead_ - (fault == RowFault::None ? 0 : 1), fault, readStripEnd(bits_)};
}

std::size_t Group4RowReader::mostChanges(std::int32_t width, std::size_t stripBytes) {
  return std::min(static_cast<std::size_t>(width), stripBytes * 8) + 2;
}

RowsEnd readLeniently(ByteView strip, std::int32_t width, std::uint32_t rows) {
  BitReader bits(strip);
  LenientRow reference(width), row(width);
  RowsEnd read;
  while (read.rows < rows) {
    read.fault = LenientRowWalk(bits, reference, row).read();
    if (read.fault != RowFault::None) break;
    ++read.rows;
    std::swap(reference, row);
  }
  read.end = readStripEnd(bits);
  return read;
}

}  // namespace orvane::group4
