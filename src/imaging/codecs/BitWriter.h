#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/codecs/byte_order.h"
#include "imaging/page/Bytes.h"

namespace orvane {

/// Collects bits, filling each byte from its highest bit on. The caller makes room before it puts.
class BitWriter {
 public:
  /// Makes room for `bytes` more bytes of output.
  void reserve(std::size_t bytes) {
    const std::size_t needed = size_ + bytes + 2 * sizeof(std::uint64_t);
    if (needed > data_.size()) data_.resize(needed + data_.size() / 2);
  }

  /// Adds the `count` low bits of `bits`, whose others are 0; 1 to 32 of them. Whole bytes go out
  /// at once: that is cheaper than to ask each time whether a word is full.
  void put(std::uint32_t bits, unsigned count) {
    pendingCount_ += count;
    pending_ |= std::uint64_t{bits} << (64 - pendingCount_);
    storeBigEndian64(data_.data() + size_, pending_);
    size_ += pendingCount_ / 8;
    pending_ <<= pendingCount_ / 8 * 8;
    pendingCount_ %= 8;
  }

  std::size_t bitCount() const { return size_ * 8 + pendingCount_; }

  /// Fills the last byte with zeros and hands the bytes over.
  Bytes take() {
    data_.resize(size_ + (pendingCount_ + 7) / 8);
    size_ = 0;
    pending_ = 0;
    pendingCount_ = 0;
    return std::move(data_);
  }

 private:
  Bytes data_;
  std::size_t size_ = 0;       ///< whole bytes of output in `data_`
  std::uint64_t pending_ = 0;  ///< the bits behind them, from the highest one on
  unsigned pendingCount_ = 0;
};

}  // namespace orvane
