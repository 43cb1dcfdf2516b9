#include "imaging/jpeg/jpeg_tables.h"

#include <algorithm>
#include <numeric>

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

const HuffmanTable kAnnexKDcLuminance = {{0, 1, 5, 1, 1, 1, 1, 1, 1},
                                         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}};

const HuffmanTable kAnnexKDcChrominance = {{0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1},
                                           {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}};

const HuffmanTable kAnnexKAcLuminance = {
    {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7D},
    {0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61,
     0x07, 0x22, 0x71, 0x14, 0x32, 0x81, 0x91, 0xA1, 0x08, 0x23, 0x42, 0xB1, 0xC1, 0x15, 0x52,
     0xD1, 0xF0, 0x24, 0x33, 0x62, 0x72, 0x82, 0x09, 0x0A, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x25,
     0x26, 0x27, 0x28, 0x29, 0x2A, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x43, 0x44, 0x45,
     0x46, 0x47, 0x48, 0x49, 0x4A, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5A, 0x63, 0x64,
     0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A, 0x83,
     0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99,
     0x9A, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6,
     0xB7, 0xB8, 0xB9, 0xBA, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA, 0xD2, 0xD3,
     0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xDA, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8,
     0xE9, 0xEA, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xFA}};

const HuffmanTable kAnnexKAcChrominance = {
    {0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 0x77},
    {0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61,
     0x71, 0x13, 0x22, 0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xA1, 0xB1, 0xC1, 0x09, 0x23, 0x33,
     0x52, 0xF0, 0x15, 0x62, 0x72, 0xD1, 0x0A, 0x16, 0x24, 0x34, 0xE1, 0x25, 0xF1, 0x17, 0x18,
     0x19, 0x1A, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x43, 0x44,
     0x45, 0x46, 0x47, 0x48, 0x49, 0x4A, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5A, 0x63,
     0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A,
     0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97,
     0x98, 0x99, 0x9A, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xB2, 0xB3, 0xB4,
     0xB5, 0xB6, 0xB7, 0xB8, 0xB9, 0xBA, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA,
     0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xDA, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7,
     0xE8, 0xE9, 0xEA, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xFA}};

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
