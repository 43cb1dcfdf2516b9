#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/Bytes.h"

/// Big-endian loads and stores at any address, for bit streams that begin at the highest bit.

namespace orvane {

constexpr std::uint64_t swapBytes(std::uint64_t v) {
  v = (v & 0x00FF00FF00FF00FFu) << 8 | (v >> 8 & 0x00FF00FF00FF00FFu);
  v = (v & 0x0000FFFF0000FFFFu) << 16 | (v >> 16 & 0x0000FFFF0000FFFFu);
  return v << 32 | v >> 32;
}

inline std::uint64_t loadBigEndian64(const std::uint8_t* at) {
  std::uint64_t v;
  std::memcpy(&v, at, sizeof v);
  return std::endian::native == std::endian::little ? swapBytes(v) : v;
}

inline void storeBigEndian64(std::uint8_t* at, std::uint64_t v) {
  if constexpr (std::endian::native == std::endian::little) v = swapBytes(v);
  // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): BitWriter::reserve has set the place
  std::memcpy(at, &v, sizeof v);
}

/// Reads bits from the highest of each byte on. After the end of the data it reads zeros;
/// `overran` is true when some of those have been used.
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

  /// The bits ahead, the next one in the highest place; zeros after the ready ones.
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

/// Puts bits into memory that has room for them, filling each byte from its highest bit on. A few
/// numbers only: a local copy stays in registers.
class BitPen {
 public:
  BitPen() = default;
  explicit BitPen(std::uint8_t* out) : out_(out) {}

  /// Adds the `count` low bits of `bits`, whose others are 0; 1 to 32 of them. Stores 8 bytes at
  /// once: that is cheaper than to ask each time whether a word is full.
  void put(std::uint32_t bits, unsigned count) {
    pendingCount_ += count;
    pending_ |= std::uint64_t{bits} << (64 - pendingCount_);
    storeBigEndian64(out_, pending_);
    out_ += pendingCount_ / 8;
    pending_ <<= pendingCount_ / 8 * 8;
    pendingCount_ %= 8;
  }

  std::uint8_t* wholeBytesEnd() const { return out_; }
  unsigned pendingCount() const { return pendingCount_; }  ///< bits after the last whole byte

  /// The end of the output with the last byte filled up with zeros.
  std::uint8_t* end() const { return out_ + (pendingCount_ + 7) / 8; }

  /// Goes on at another place, to which the whole bytes have been moved.
  void moveTo(std::uint8_t* out) { out_ = out; }

 private:
  std::uint8_t* out_ = nullptr;
  std::uint64_t pending_ = 0;  ///< the bits after the whole bytes, from the highest one on
  unsigned pendingCount_ = 0;
};

/// A pen with memory of its own, for which the caller makes room before it puts.
class BitWriter {
 public:
  /// Makes room for `bytes` more bytes of output.
  void reserve(std::size_t bytes) {
    const std::size_t size = wholeBytes();
    const std::size_t needed = size + bytes + 2 * sizeof(std::uint64_t);
    if (needed <= data_.size()) return;
    data_.resize(needed + data_.size() / 2);
    pen_.moveTo(data_.data() + size);
  }

  void put(std::uint32_t bits, unsigned count) { pen_.put(bits, count); }

  std::size_t bitCount() const { return wholeBytes() * 8 + pen_.pendingCount(); }

  /// Fills the last byte with zeros and hands the bytes over.
  Bytes take() {
    data_.resize(static_cast<std::size_t>(pen_.end() - data_.data()));
    pen_ = BitPen();
    return std::move(data_);
  }

  /// For a caller who puts with a copy of the pen, and then assigns the copy.
  BitPen& pen() { return pen_; }

 private:
  std::size_t wholeBytes() const {
    return static_cast<std::size_t>(pen_.wholeBytesEnd() - data_.data());
  }

  Bytes data_;
  BitPen pen_;
};

}  // namespace orvane
