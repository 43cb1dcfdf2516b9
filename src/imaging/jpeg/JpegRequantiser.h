#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "imaging/jpeg/HuffmanTable.h"
#include "imaging/jpeg/jpeg_header.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {

/// A sink for JpegScan that writes the blocks anew under coarser quantisation tables, coefficient
/// by coefficient as they come. Streams of the same components may follow each other: the blocks of
/// all go into one.
class JpegRequantiser {
 public:
  /// The streams to come have the components of `target`, which says what is written.
  explicit JpegRequantiser(const JpegHeader& target);

  /// To be called before each stream is walked.
  void beginStream(const JpegHeader& source);

  void dc(std::size_t component, int value) {
    bits_.reserve(kMostBlockBytes);
    coder_ = &coders_[component];
    lastIndex_ = 0;
    const int scaled = coder_->steps[0].scale(value);
    putValue(coder_->dcCodes, 0, scaled - coder_->lastDc);
    coder_->lastDc = scaled;
  }

  void ac(unsigned index, int value) {
    const int scaled = coder_->steps[index].scale(value);
    if (scaled == 0) return;
    unsigned run = index - lastIndex_ - 1;
    for (; run > 15; run -= 16) putSymbol(coder_->acCodes, kSixteenZeros);
    putValue(coder_->acCodes, run, scaled);
    lastIndex_ = index;
  }

  void endBlock() {
    if (lastIndex_ != 63) putSymbol(coder_->acCodes, kEndOfBlock);
  }

  /// The entropy-coded data of all blocks, with zero bytes stuffed.
  void finish(Bytes& stream);

 private:
  // 64 coefficients, each of a code of 16 bits and a value of 11.
  static constexpr std::size_t kMostBlockBytes = 64 * 27 / 8 + 8;

  // Makes the division exact: the dividend stays below 2^19, the divisor below 2^8.
  static constexpr unsigned kReciprocalBits = 28;

  static constexpr unsigned kSixteenZeros = 0xF0;
  static constexpr unsigned kEndOfBlock = 0;

  // From a quantisation step to a coarser one: value * from / to, by multiplication.
  struct Step {
    std::uint32_t from = 1;
    std::uint32_t offset = 0;
    std::uint32_t reciprocal = 0;

    int scale(int value) const {
      const std::uint64_t dividend = static_cast<std::uint32_t>(std::abs(value)) * from + offset;
      const auto scaled = static_cast<int>(dividend * reciprocal >> kReciprocalBits);
      return value < 0 ? -scaled : scaled;
    }
  };

  struct Coder {
    HuffmanEncoder dcCodes;
    HuffmanEncoder acCodes;
    std::array<Step, 64> steps{};
    int lastDc = 0;
  };

  void putSymbol(const HuffmanEncoder& codes, unsigned symbol) {
    const HuffmanEncoder::Code code = codes.code(symbol);
    bits_.put(code.bits, code.length);
  }

  // A run of zeros and the value behind it: a code for both and the value's low bits; a negative
  // value is written less 1 (T.81 F.1.2.1).
  void putValue(const HuffmanEncoder& codes, unsigned run, int value) {
    const auto size = static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(value))));
    const HuffmanEncoder::Code code = codes.code(run << 4 | size);
    const auto raw = static_cast<std::uint32_t>(value - (value < 0 ? 1 : 0)) & ((1u << size) - 1);
    bits_.put(std::uint32_t{code.bits} << size | raw, code.length + size);
  }

  JpegHeader target_;
  std::vector<Coder> coders_;
  BitWriter bits_;
  Coder* coder_ = nullptr;  ///< of the block at hand
  unsigned lastIndex_ = 0;  ///< of the last coefficient written
};

}  // namespace orvane
