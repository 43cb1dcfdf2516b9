#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/codecs/byte_order.h"
#include "imaging/page/Bytes.h"

namespace orvane {

/// Reads bits from the highest of each byte on. Behind the end of the data it goes on with zeros;
/// `overran` tells that some of those have been used.
class BitReader {
 public:
  explicit BitReader(ByteView data) : data_(data) {}

  /// Makes at least 56 bits ready for `bits` and `skip`.
  void refill() {
    if (next_ + 8 <= data_.size()) {
      window_ |= loadBigEndian64(data_.data() + next_) >> ready_;
      next_ += (63 - ready_) >> 3;
      ready_ |= 56;
    } else {
      refillNearEnd();
    }
  }

  unsigned ready() const { return ready_; }

  /// The bits ahead, the next one in the highest place; zeros behind the ready ones.
  std::uint64_t bits() const { return window_; }

  void skip(unsigned count) {
    window_ <<= count;
    ready_ -= count;
  }

  /// Bits used so far.
  std::size_t position() const { return next_ * 8 - ready_; }

  bool overran() const { return position() > data_.size() * 8; }

  /// True when nothing but zero bits is left.
  bool onlyZerosLeft() const {
    if (overran()) return true;
    if (window_ != 0) return false;
    for (std::size_t i = next_; i < data_.size(); ++i) {
      if (data_[i] != 0) return false;
    }
    return true;
  }

 private:
  void refillNearEnd() {
    while (ready_ < 56) {
      const std::uint64_t byte = next_ < data_.size() ? data_[next_] : 0;
      window_ |= byte << (56 - ready_);
      ready_ += 8;
      ++next_;
    }
  }

  ByteView data_;
  std::size_t next_ = 0;      ///< the first byte not yet counted as ready
  std::uint64_t window_ = 0;  ///< may hold bits of `next_` too, below the ready ones
  unsigned ready_ = 0;
};

}  // namespace orvane
