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

  /// Adds the `count` low bits of `bits`, whose others are 0. At most 32.
  void put(std::uint32_t bits, unsigned count) {
    pending_ = pending_ << count | bits;
    pendingCount_ += count;
    if (pendingCount_ >= 32) flushWord();
  }

  std::size_t bitCount() const { return size_ * 8 + pendingCount_; }

  /// Fills the last byte with zeros and hands the bytes over.
  Bytes take() {
    storeBigEndian64(data_.data() + size_,
                     pendingCount_ == 0 ? 0 : pending_ << (64 - pendingCount_));
    data_.resize(size_ + (pendingCount_ + 7) / 8);
    size_ = 0;
    pending_ = 0;
    pendingCount_ = 0;
    return std::move(data_);
  }

 private:
  void flushWord() {
    pendingCount_ -= 32;
    storeBigEndian64(data_.data() + size_, pending_ >> pendingCount_ << 32);
    size_ += 4;
  }

  Bytes data_;
  std::size_t size_ = 0;  ///< whole bytes of output in `data_`
  std::uint64_t pending_ = 0;
  unsigned pendingCount_ = 0;
};

}  // namespace orvane
