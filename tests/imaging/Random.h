#pragma once

#include <cstdint>

namespace orvane::test {

/// Numbers that are the same on every run and machine (xorshift64).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 1) {}

  /// A number from 0 to `end` - 1.
  std::uint32_t below(std::uint64_t end) {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<std::uint32_t>((state_ >> 16) % end);
  }

 private:
  std::uint64_t state_;
};

/// A copy of `bytes`, not empty, with a bit or a byte changed, or cut short.
template <typename Container>
Container damaged(Container bytes, Random& random) {
  const std::uint32_t at = random.below(bytes.size()), way = random.below(3);
  if (way == 0) bytes[at] ^= static_cast<typename Container::value_type>(1 << random.below(8));
  if (way == 1) bytes[at] = static_cast<typename Container::value_type>(random.below(256));
  if (way == 2) bytes.resize(at);
  return bytes;
}

}  // namespace orvane::test
