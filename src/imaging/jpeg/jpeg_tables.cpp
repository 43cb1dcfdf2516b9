#include "imaging/jpeg/jpeg_tables.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>
#include <numeric>

#include "imaging/jpeg/LibjpegErrors.h"

namespace orvane {
namespace {

// The example tables of Annex K.1.

constexpr RowOrderTable kAnnexKLuminance = {{16, 11, 10, 16, 24,  40,  51,  61,   //
                                             12, 12, 14, 19, 26,  58,  60,  55,   //
                                             14, 13, 16, 24, 40,  57,  69,  56,   //
                                             14, 17, 22, 29, 51,  87,  80,  62,   //
                                             18, 22, 37, 56, 68,  109, 103, 77,   //
                                             24, 35, 55, 64, 81,  104, 113, 92,   //
                                             49, 64, 78, 87, 103, 121, 120, 101,  //
                                             72, 92, 95, 98, 112, 100, 103, 99}};

constexpr RowOrderTable kAnnexKChrominance = {{17, 18, 24, 47, 99, 99, 99, 99,  //
                                               18, 21, 26, 66, 99, 99, 99, 99,  //
                                               24, 26, 56, 99, 99, 99, 99, 99,  //
                                               47, 66, 99, 99, 99, 99, 99, 99,  //
                                               99, 99, 99, 99, 99, 99, 99, 99,  //
                                               99, 99, 99, 99, 99, 99, 99, 99,  //
                                               99, 99, 99, 99, 99, 99, 99, 99,  //
                                               99, 99, 99, 99, 99, 99, 99, 99}};

// The place in row order of each coefficient in zigzag order (T.81 figure A.6).
constexpr std::array<std::uint8_t, 64> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,   //
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,  //
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,  //
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

RowOrderTable scaled(const RowOrderTable& table, int quality) {
  quality = std::clamp(quality, 1, 100);
  const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  RowOrderTable result;
  std::ranges::transform(table.steps, result.steps.begin(), [percent](int step) {
    return static_cast<std::uint8_t>(std::clamp((step * percent + 50) / 100, 1, 255));
  });
  return result;
}

}  // namespace

ZigzagTable inZigzagOrder(const RowOrderTable& table) {
  ZigzagTable result;
  std::ranges::transform(kZigzag, result.steps.begin(),
                         [&table](std::uint8_t place) { return table.steps[place]; });
  return result;
}

SaveTables saveTables(JpegFactors factors) {
  return {scaled(kAnnexKLuminance, 100 - factors.major),
          scaled(kAnnexKChrominance, 100 - factors.minor)};
}

std::size_t HuffmanTable::codeCount() const {
  return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

bool HuffmanTable::isPossible() const {
  std::uint32_t free = 1;  // codes of a length; the one of all ones must stay free
  for (const std::uint8_t count : counts) {
    free *= 2;
    if (count >= free) return false;
    free -= count;
  }
  return codeCount() <= symbols.size();
}

namespace {

/// A libjpeg object that only has its default settings.
class DefaultCompressor {
 public:
  DefaultCompressor() { info_.err = &errors_.base; }
  DefaultCompressor(const DefaultCompressor&) = delete;
  DefaultCompressor& operator=(const DefaultCompressor&) = delete;
  ~DefaultCompressor() { jpeg_destroy_compress(&info_); }

  void setDefaults() {
    if (!trySetDefaults()) errors_.fail();
  }

  /// After `setDefaults`: those of luminance (0) or chrominance (1).
  HuffmanPair huffmanTables(std::size_t index) const {
    return {tableOf(*info_.dc_huff_tbl_ptrs[index]), tableOf(*info_.ac_huff_tbl_ptrs[index])};
  }

 private:
  bool trySetDefaults() {
    if (setjmp(errors_.jump) != 0) return false;
    jpeg_create_compress(&info_);
    info_.input_components = 3;
    info_.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info_);
    return true;
  }

  static HuffmanTable tableOf(const JHUFF_TBL& theirs) {
    HuffmanTable table;
    std::copy_n(theirs.bits + 1, table.counts.size(), table.counts.begin());  // from length 1 on
    std::copy_n(theirs.huffval, table.codeCount(), table.symbols.begin());
    return table;
  }

  LibjpegErrors errors_;
  jpeg_compress_struct info_{};
};

}  // namespace

const DefaultHuffmanTables& defaultHuffmanTables() {
  static const DefaultHuffmanTables tables = [] {
    DefaultCompressor compressor;
    compressor.setDefaults();
    return DefaultHuffmanTables{compressor.huffmanTables(0), compressor.huffmanTables(1)};
  }();
  return tables;
}

namespace {

// Calls `visit(code, length, symbol)` for each code of a table, in ascending order (Annex C.2).
template <typename Visit>
void forEachCode(const HuffmanTable& table, Visit visit) {
  std::uint32_t code = 0;
  std::size_t index = 0;
  for (unsigned length = 1; length <= table.counts.size(); ++length, code <<= 1) {
    for (unsigned i = 0; i < table.counts[length - 1]; ++i) {
      visit(code++, length, table.symbols[index++]);
    }
  }
}

}  // namespace

CoefficientDecoder::CoefficientDecoder(const HuffmanTable& table, unsigned mostSize)
    : table_(table), mostSize_(mostSize) {
  forEachCode(table, [this](std::uint32_t code, unsigned length, unsigned symbol) {
    if (length > kShortBits) return;
    const unsigned free = kShortBits - length;  // bits after the code
    std::fill_n(codes_.begin() + (code << free), std::size_t{1} << free,
                Code{static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(symbol)});
    const unsigned size = symbol & 15;
    if (size > free) return;
    const unsigned open = free - size;  // bits after the step
    for (std::uint32_t value = 0; value < 1u << size; ++value) {
      std::fill_n(short_.begin() + ((code << size | value) << open), std::size_t{1} << open,
                  stepOf(length, symbol, value));
    }
  });
}

CoefficientStep CoefficientDecoder::longStep(std::uint64_t bits) const {
  Code code = codes_[bits >> (64 - kShortBits)];
  if (code.length == 0) code = longCode(bits);
  if (code.length == 0) return {};
  const auto valueBits = bits << code.length >> 1 >> (63 - (code.symbol & 15));
  return stepOf(code.length, code.symbol, static_cast<unsigned>(valueBits));
}

CoefficientDecoder::Code CoefficientDecoder::longCode(std::uint64_t bits) const {
  std::uint32_t first = 0;  // the first code of a length, and the index of its symbol
  std::uint32_t index = 0;
  for (unsigned length = 1; length <= table_.counts.size(); ++length) {
    const auto code = static_cast<std::uint32_t>(bits >> (64 - length));
    const std::uint32_t count = table_.counts[length - 1];
    if (code - first < count) {
      return {static_cast<std::uint8_t>(length), table_.symbols[index + code - first]};
    }
    first = (first + count) << 1;
    index += count;
  }
  return {};
}

// A symbol is a run of zeros and the size of the value in bits. Its first bit is 0 for a negative
// value, which is stored less 1 (T.81 figure F.12). Without a value there are two symbols: the end
// of the block and sixteen zeros.
CoefficientStep CoefficientDecoder::stepOf(unsigned codeLength, unsigned symbol,
                                           unsigned valueBits) const {
  const unsigned run = symbol >> 4;
  const unsigned size = symbol & 15;
  if (size > mostSize_ || (size == 0 && run != 0 && run != 15)) return {};
  const bool isNegative = valueBits < 1u << size >> 1;
  const int value = static_cast<int>(valueBits) - (isNegative ? (1 << size) - 1 : 0);
  return {static_cast<std::int16_t>(value),
          symbol == 0 ? CoefficientStep::kEndOfBlock : static_cast<std::uint8_t>(run + 1),
          static_cast<std::uint8_t>(codeLength + size)};
}

// More than 62 coefficients are left to single steps, which tell where a block ends.
CoefficientRuns::CoefficientRuns(const CoefficientDecoder& decoder) {
  for (std::uint64_t window = 0; window < runs_.size(); ++window) {
    CoefficientRun& run = runs_[window];
    while ((run.advance & CoefficientRun::kEndOfBlock) == 0) {
      const CoefficientStep step = decoder.shortStep(window << (64 - kBits) << run.length);
      const bool ends = step.advance == CoefficientStep::kEndOfBlock;
      if (step.length == 0 || run.length + step.length > kBits) break;
      if (!ends && run.advance + step.advance > 62) break;
      run.advance = static_cast<std::uint8_t>(run.advance + step.advance);
      run.length = static_cast<std::uint8_t>(run.length + step.length);
    }
    if (run.length == 0) run.advance = CoefficientRun::kNone;
  }
}

HuffmanEncoder::HuffmanEncoder(const HuffmanTable& table) {
  forEachCode(table, [this](std::uint32_t code, unsigned length, unsigned symbol) {
    codes_[symbol] = {static_cast<std::uint16_t>(code), static_cast<std::uint8_t>(length)};
  });
}

}  // namespace orvane
