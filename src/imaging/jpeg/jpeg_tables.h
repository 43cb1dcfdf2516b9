#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/jpeg/JpegFactors.h"

/// The quantisation and Huffman tables of JPEG streams, and the coders that Huffman tables make.

namespace orvane {

/// Quantisation steps from 1 to 255 in the order of a block's rows, as ITU-T T.81 prints them.
struct RowOrderTable {
  std::array<std::uint8_t, 64> steps{};
};

/// The same in zigzag order (T.81 figure A.6), as a stream holds them.
struct ZigzagTable {
  std::array<std::uint8_t, 64> steps{};

  bool operator==(const ZigzagTable&) const = default;
};

ZigzagTable inZigzagOrder(const RowOrderTable& table);

struct SaveTables {
  RowOrderTable luminance;
  RowOrderTable chrominance;
};

/// The tables of a save with `factors`: those of T.81 Annex K.1, scaled by libjpeg's rule for a
/// quality of 1 to 100. Other qualities are held to that range.
SaveTables saveTables(JpegFactors factors);

/// A Huffman table of a JPEG stream (T.81 Annex C): how many codes there are of each length from 1
/// to 16, and the symbols in the order of their codes.
struct HuffmanTable {
  std::array<std::uint8_t, 16> counts{};
  std::array<std::uint8_t, 256> symbols{};  ///< 0 after the last one

  bool operator==(const HuffmanTable&) const = default;

  std::size_t codeCount() const;

  /// True when there are at most 256 codes and they fit into their lengths.
  bool isPossible() const;
};

/// The Huffman tables of one kind of component.
struct HuffmanPair {
  HuffmanTable dc;
  HuffmanTable ac;
};

/// The tables that libjpeg writes by default, which serve every stream: those of T.81 Annex K.3.
struct DefaultHuffmanTables {
  HuffmanPair luminance;
  HuffmanPair chrominance;
};
const DefaultHuffmanTables& defaultHuffmanTables();

/// The most bits that a value takes after its code in a baseline stream (T.81 tables F.1 and F.2).
inline constexpr unsigned kMostDcSize = 11;
inline constexpr unsigned kMostAcSize = 10;

/// One step through the coefficients of a block: a run of zeros and the value after it.
struct CoefficientStep {
  static constexpr std::uint8_t kEndOfBlock = 128;  ///< an `advance` further than any block

  std::int16_t value = 0;
  std::uint8_t advance = 0;  ///< from the coefficient before the run to the one of the value
  std::uint8_t length = 0;   ///< of the code and the value's bits; 0: there is no such code
};

/// Reads the steps that a bit stream goes on with. The bits are given with the next one in the
/// highest place.
class CoefficientDecoder {
 public:
  /// `table` is possible. A code for a value of more than `mostSize` bits counts as none.
  CoefficientDecoder(const HuffmanTable& table, unsigned mostSize);

  static constexpr unsigned kShortBits = 11;

  /// A step of at most `kShortBits` bits in one look-up. Length 0: it is longer, or there is none.
  CoefficientStep shortStep(std::uint64_t bits) const { return short_[bits >> (64 - kShortBits)]; }

  /// A step of any length.
  CoefficientStep anyStep(std::uint64_t bits) const {
    const CoefficientStep step = shortStep(bits);
    return step.length != 0 ? step : longStep(bits);
  }

 private:
  struct Code {
    std::uint8_t length = 0;  ///< 0: the bits begin no code, or a longer one
    std::uint8_t symbol = 0;
  };

  CoefficientStep longStep(std::uint64_t bits) const;
  Code longCode(std::uint64_t bits) const;
  CoefficientStep stepOf(unsigned codeLength, unsigned symbol, unsigned valueBits) const;

  HuffmanTable table_;
  unsigned mostSize_;
  std::array<CoefficientStep, 1u << kShortBits> short_{};
  std::array<Code, 1u << kShortBits> codes_{};  ///< whatever the length of the value
};

/// Steps through coefficients whose values do not matter.
struct CoefficientRun {
  static constexpr std::uint8_t kEndOfBlock = CoefficientStep::kEndOfBlock;
  static constexpr std::uint8_t kNone = 64;  ///< an `advance` past every block: there is no step

  std::uint8_t advance = 0;  ///< of all steps; with `kEndOfBlock` in addition when the block ends
  std::uint8_t length = 0;   ///< of all steps, in bits
};

/// Reads several such steps in one look-up. Its entries are small, since two tables have to stay in
/// the nearest cache.
class CoefficientRuns {
 public:
  explicit CoefficientRuns(const CoefficientDecoder& decoder);

  static constexpr unsigned kBits = 13;

  /// All steps that the next `kBits` bits hold whole, up to the end of a block.
  CoefficientRun steps(std::uint64_t bits) const { return runs_[bits >> (64 - kBits)]; }

 private:
  std::array<CoefficientRun, 1u << kBits> runs_{};
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
