#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/Bytes.h"

namespace orvane {

/// A 128-bit number that stands for a row of bytes: the same bytes give the same number on every
/// machine. It tells documents apart; it is no protection against forgery.
class Fingerprint {
 public:
  void add(ByteView bytes);
  void add(std::string_view text);
  /// 32 hexadecimal digits.
  std::string hex() const;

 private:
  void mix(std::uint64_t word);

  std::uint64_t first_ = 0x243F6A8885A308D3;  // the first bits of pi behind the point
  std::uint64_t second_ = 0x13198A2E03707344;
};

}  // namespace orvane
