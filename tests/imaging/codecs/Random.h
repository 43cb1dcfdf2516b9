#pragma once

#include <cstdint>

namespace orvane::test {

/// Numbers that are the same on every run and machine (xorshift64).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 1) {}

  std::uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }

  /// A number from 0 to `end` - 1.
  std::uint32_t below(std::uint64_t end) {
    return static_cast<std::uint32_t>((next() >> 16) % end);
  }

 private:
  std::uint64_t state_;
};

}  // namespace orvane::test
