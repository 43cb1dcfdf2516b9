#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

/// Big-endian loads and stores at any address, for bit streams that begin at the highest bit.
namespace orvane {

constexpr std::uint64_t swapBytes(std::uint64_t v) {
  v = (v & 0x00FF00FF00FF00FFu) << 8 | (v >> 8 & 0x00FF00FF00FF00FFu);
  v = (v & 0x0000FFFF0000FFFFu) << 16 | (v >> 16 & 0x0000FFFF0000FFFFu);
  return v << 32 | v >> 32;
}

constexpr std::uint16_t swapBytes(std::uint16_t v) {
  return static_cast<std::uint16_t>(v << 8 | v >> 8);
}

inline std::uint64_t loadBigEndian64(const std::uint8_t* at) {
  std::uint64_t v;
  std::memcpy(&v, at, sizeof v);
  return std::endian::native == std::endian::little ? swapBytes(v) : v;
}

inline void storeBigEndian64(std::uint8_t* at, std::uint64_t v) {
  if constexpr (std::endian::native == std::endian::little) v = swapBytes(v);
  std::memcpy(at, &v, sizeof v);
}

}  // namespace orvane
