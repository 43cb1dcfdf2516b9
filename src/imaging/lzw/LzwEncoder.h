#pragma once

#include <array>
#include <memory>

#include "foundation/Bytes.h"

namespace orvane {

/// Encodes strips as LZW (TIFF 6.0 section 13): codes of 9 to 12 bits, the highest bit first, each
/// width left one code early.
class LzwEncoder {
 public:
  LzwEncoder();
  ~LzwEncoder();

  /// Encodes two strips, each by itself. They take turns byte by byte: while the processor waits
  /// for memory in one it works on the other. An empty strip gives no bytes.
  std::array<Bytes, 2> encode(const std::array<ByteView, 2>& strips);

 private:
  struct Dictionary;
  class StripEncoder;

  std::unique_ptr<std::array<Dictionary, 2>> dictionaries_;
};

}  // namespace orvane
