#include "imaging/lzw/LzwEncoder.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

constexpr std::uint32_t kClearCode = 256;
constexpr std::uint32_t kEndCode = 257;
constexpr std::uint32_t kFirstFree = 258;
constexpr std::uint32_t kLastCode = 4094;
constexpr unsigned kFirstWidth = 9;
constexpr unsigned kLastWidth = 12;

// The width of the code that is written when `next` is the next free code.
unsigned codeWidth(std::size_t next) {
  return std::min(static_cast<unsigned>(std::bit_width(next)), kLastWidth);
}

// At most one code of 12 bits for each byte, and the clear codes.
constexpr std::size_t mostOutput(std::size_t stripBytes) {
  return stripBytes + stripBytes / 2 + stripBytes / 1024 + 64;
}

}  // namespace

// The sequences of bytes that the codes of one strip stand for.
struct LzwEncoder::Dictionary {
  // A place for each pair of a byte and the code of the sequence before it.
  static constexpr std::size_t placeOf(std::size_t code, std::size_t byte) {
    return byte << kLastWidth | code;
  }
  static constexpr std::size_t codeOf(std::size_t place) { return place % (1u << kLastWidth); }

  // By place: the code of the longer sequence less the byte, or 0 where it has no code yet.
  std::array<std::uint16_t, 256 << kLastWidth> steps{};

  // The places of the longer sequences, by their codes; for as many codes as have been given.
  std::array<std::uint32_t, 1 << kLastWidth> places;

  Bytes output;  // kept from strip to strip
  BitPen pen;
};

// One strip at work. The numbers that change with each byte are kept apart from the dictionary, so
// that they stay in registers.
class LzwEncoder::StripEncoder {
 public:
  StripEncoder(Dictionary& dictionary, ByteView strip)
      : dictionary_(dictionary), sequence_(strip.empty() ? 0 : strip[0]) {
    Bytes& output = dictionary_.output;
    output.resize(std::max(output.size(), mostOutput(strip.size())));
    dictionary_.pen = BitPen(output.data());
    dictionary_.pen.put(kClearCode, kFirstWidth);
  }

  // The step leads from the byte to the sequence to go on with: the longer one, or the byte alone
  // where the longer one becomes known only now. So there is no branch here that depends on the
  // data, which the processor would often predict wrongly.
  void take(std::size_t byte) {
    const std::size_t place = Dictionary::placeOf(sequence_, byte);
    const std::size_t step = dictionary_.steps[place];
    const std::size_t isNew = step == 0 ? 1 : 0;
    dictionary_.steps[place] = static_cast<std::uint16_t>(step + isNew * (next_ - byte));
    dictionary_.places[next_] = static_cast<std::uint32_t>(place);
    sequence_ = byte + step;
    next_ += isNew;
    if (next_ > kLastCode) [[unlikely]] {
      writeCodes(dictionary_, next_);
      dictionary_.pen.put(kClearCode, kLastWidth);
      next_ = kFirstFree;
    }
  }

  Bytes finish() {
    dictionary_.places[next_++] = static_cast<std::uint32_t>(sequence_);
    writeCodes(dictionary_, next_);
    dictionary_.pen.put(kEndCode, codeWidth(next_));
    return Bytes(dictionary_.output.data(), dictionary_.pen.end());
  }

 private:
  // Each longer sequence became known when the code of the one before it was due. Writes these
  // codes and forgets the sequences.
  static void writeCodes(Dictionary& dictionary, std::size_t next) {
    BitPen pen = dictionary.pen;
    for (std::size_t code = kFirstFree; code < next; ++code) {
      const std::uint32_t place = dictionary.places[code];
      pen.put(static_cast<std::uint32_t>(Dictionary::codeOf(place)), codeWidth(code));
      dictionary.steps[place] = 0;
    }
    dictionary.pen = pen;
  }

  Dictionary& dictionary_;
  std::size_t sequence_;  // the code of the bytes taken since the last code
  std::size_t next_ = kFirstFree;
};

LzwEncoder::LzwEncoder() : dictionaries_(std::make_unique<std::array<Dictionary, 2>>()) {}

LzwEncoder::~LzwEncoder() = default;

std::array<Bytes, 2> LzwEncoder::encode(const std::array<ByteView, 2>& strips) {
  const auto& [left, right] = strips;
  StripEncoder leftEncoder((*dictionaries_)[0], left);
  StripEncoder rightEncoder((*dictionaries_)[1], right);
  const std::size_t both = std::min(left.size(), right.size());
  for (std::size_t i = 1; i < both; ++i) {
    leftEncoder.take(left[i]);
    rightEncoder.take(right[i]);
  }
  const std::size_t alone = std::max<std::size_t>(both, 1);
  for (std::size_t i = alone; i < left.size(); ++i) leftEncoder.take(left[i]);
  for (std::size_t i = alone; i < right.size(); ++i) rightEncoder.take(right[i]);
  return {left.empty() ? Bytes() : leftEncoder.finish(),
          right.empty() ? Bytes() : rightEncoder.finish()};
}

}  // namespace orvane
