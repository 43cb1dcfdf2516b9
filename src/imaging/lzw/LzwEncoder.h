#pragma once

#include <array>
#include <cstdint>

#include "foundation/Bytes.h"

namespace orvane {

/// Encodes strips as LZW (TIFF 6.0 section 13): codes of 9 to 12 bits, the highest bit first, each
/// width left one code early. One object encodes strip after strip, each by itself.
class LzwEncoder {
 public:
  LzwEncoder();
  /// `strip` is not empty.
  Bytes encode(ByteView strip);

 private:
  static constexpr std::uint32_t kSlots = 1u << 14;

  /// The known sequences. One of two bytes and more lies in a slot that is found from the place of
  /// the sequence without its last byte, and from that byte; its place is its name while it grows,
  /// so that no step waits for a load from here. The single bytes lie behind the slots.
  /// An entry is a key of what leads to it, above a code of 12 bits.
  std::array<std::uint32_t, kSlots + 256> entries_;
  Bytes output_;  ///< kept from strip to strip
};

}  // namespace orvane
