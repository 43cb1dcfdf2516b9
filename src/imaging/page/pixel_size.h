#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane {

template <std::size_t Size>
using Pixel = std::array<std::uint8_t, Size>;

/// Calls `work` with a Pixel of `bytes` bytes, so that loops over whole-byte pixels are compiled
/// for their size. The sizes are those of 1 to 5 samples of 8 or 16 bits.
template <typename Work>
void withPixelOf(std::size_t bytes, Work work) {
  switch (bytes) {
    case 1:
      return work(Pixel<1>());
    case 2:
      return work(Pixel<2>());
    case 3:
      return work(Pixel<3>());
    case 4:
      return work(Pixel<4>());
    case 5:
      return work(Pixel<5>());
    case 6:
      return work(Pixel<6>());
    case 8:
      return work(Pixel<8>());
    case 10:
      return work(Pixel<10>());
    default:
      return;
  }
}

}  // namespace orvane
