#include "imaging/group4/Group4LenientReader.h"

#include <utility>
#include <vector>

#include "imaging/group4/group4_codes.h"

namespace orvane::group4 {
namespace {

// The changing elements of a row, after one at 0 for a step back from the first of them. Two may
// stand in the same place. After the last of them all others are at the row's width.
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

// Steps are those of the strict reader, one code at a time.
class LenientRowWalk {
 public:
  LenientRowWalk(BitReader& bits, const LenientRow& reference, LenientRow& row)
      : bits_(bits), reference_(reference), row_(row), width_(row.width()) {
    row_.clear();
  }

  RowFault read() {
    // Runs of no pixels do not fill a row, however many there are.
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

LenientReading readLeniently(ByteView strip, std::int32_t width, std::uint32_t rows) {
  BitReader bits(strip);
  LenientRow reference(width), row(width);
  LenientReading reading;
  while (reading.rows < rows) {
    reading.fault = LenientRowWalk(bits, reference, row).read();
    if (reading.fault != RowFault::None) break;
    ++reading.rows;
    std::swap(reference, row);
  }
  reading.end = readStripEnd(bits);
  return reading;
}

}  // namespace orvane::group4
