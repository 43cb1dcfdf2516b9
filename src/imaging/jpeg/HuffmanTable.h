#pragma once

#include <array>
#include <cstdint>

#include "foundation/Bytes.h"

namespace orvane {

/// A Huffman table of a JPEG stream (ITU-T T.81 Annex C): how many codes there are of each length
/// from 1 to 16, and the symbols in the order of their codes.
struct HuffmanTable {
  std::array<std::uint8_t, 16> counts{};
  Bytes symbols;

  bool operator==(const HuffmanTable&) const = default;
};

/// The tables of Annex K.3, which serve every stream.
extern const HuffmanTable kAnnexKDcLuminance;
extern const HuffmanTable kAnnexKDcChrominance;
extern const HuffmanTable kAnnexKAcLuminance;
extern const HuffmanTable kAnnexKAcChrominance;

/// True when the codes of the table fit into their lengths.
bool isPossible(const HuffmanTable& table);

/// Finds the code that a bit stream goes on with.
class HuffmanDecoder {
 public:
  struct Hit {
    std::uint8_t length = 0;  ///< of the code; 0: no code
    std::uint8_t symbol = 0;
  };

  /// `table` is possible.
  explicit HuffmanDecoder(const HuffmanTable& table);

  /// @param bits  the next one in the highest place
  Hit find(std::uint64_t bits) const {
    const Hit hit = short_[bits >> (64 - kShortBits)];
    return hit.length != 0 ? hit : findLong(bits);
  }

 private:
  static constexpr unsigned kShortBits = 10;
  Hit findLong(std::uint64_t bits) const;

  std::array<Hit, 1u << kShortBits> short_{};
  std::array<std::uint32_t, 17> codesEnd_{};     ///< behind the last code of each length
  std::array<std::uint32_t, 17> firstSymbol_{};  ///< index of a symbol minus its code
  Bytes symbols_;
};

/// The code of each symbol; of length 0 for one that has none.
class HuffmanEncoder {
 public:
  struct Code {
    std::uint16_t bits = 0;
    std::uint8_t length = 0;
  };

  explicit HuffmanEncoder(const HuffmanTable& table);
  Code code(unsigned symbol) const { return codes_[symbol]; }

 private:
  std::array<Code, 256> codes_{};
};

}  // namespace orvane
