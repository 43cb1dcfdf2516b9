#include "imaging/lzw/LzwEncoder.h"

#include <algorithm>

#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

constexpr std::uint32_t kClearCode = 256;
constexpr std::uint32_t kEndCode = 257;
constexpr std::uint32_t kFirstFree = 258;
constexpr std::uint32_t kLastCode = 4094;
constexpr unsigned kFirstWidth = 9;
constexpr unsigned kLastWidth = 12;

constexpr std::uint32_t kCodeMask = 0xFFF;
constexpr unsigned kKeyShift = 12;
constexpr std::uint32_t kEmpty = 0xFFFFFFFF;

// A key: the last byte, whether the sequence before it is a single byte, and how many slots were
// taken on the way from the first one. With the slot's place it tells the sequence for sure.
constexpr unsigned kSingleShift = 8;
constexpr std::uint32_t kProbeStep = 1u << 9;
constexpr std::uint32_t kMostProbes = 32;

// The first slot looked at is place * 5 + spread of the byte: with an odd spread, runs of one byte
// come round to a slot again only after all of them.
constexpr std::uint32_t kSpread = 0x1A35;

// Codes in their growing width. Plain numbers only, so that they stay in registers.
class CodeWriter {
 public:
  explicit CodeWriter(std::uint8_t* out) : out_(out) {}

  void clear() {
    putBits(kClearCode);
    width_ = kFirstWidth;
    next_ = kFirstFree;
  }

  // Writes a code; both sides then know one more sequence.
  void put(std::uint32_t code) {
    putBits(code);
    ++next_;
    if (next_ == 1u << width_ && width_ < kLastWidth) ++width_;
  }

  // The code of the sequence that becomes known with the next `put`.
  std::uint32_t next() const { return next_; }
  bool full() const { return next_ > kLastCode; }

  // Writes the end; answers where the output ends.
  std::uint8_t* finish() {
    putBits(kEndCode);
    return pendingCount_ == 0 ? out_ : out_ + 1;
  }

 private:
  void putBits(std::uint32_t bits) {
    pendingCount_ += width_;
    pending_ |= std::uint64_t{bits} << (64 - pendingCount_);
    storeBigEndian64(out_, pending_);
    out_ += pendingCount_ / 8;
    pending_ <<= pendingCount_ / 8 * 8;
    pendingCount_ %= 8;
  }

  std::uint8_t* out_;
  std::uint64_t pending_ = 0;
  unsigned pendingCount_ = 0;
  unsigned width_ = kFirstWidth;
  std::uint32_t next_ = kFirstFree;
};

// A code a byte at the most, and the clear codes.
constexpr std::size_t mostOutput(std::size_t stripBytes) {
  return stripBytes + stripBytes / 2 + stripBytes / 1024 + 64;
}

}  // namespace

LzwEncoder::LzwEncoder() {
  for (std::uint32_t byte = 0; byte < 256; ++byte) entries_[kSlots + byte] = byte;
}

Bytes LzwEncoder::encode(ByteView strip) {
  if (output_.size() < mostOutput(strip.size())) output_.resize(mostOutput(strip.size()));
  CodeWriter codes(output_.data());
  const auto begin = [&] {
    codes.clear();
    std::fill_n(entries_.begin(), kSlots, kEmpty);
  };
  begin();
  std::uint32_t sequence = kSlots + strip[0];
  for (const std::uint8_t byte : strip.subspan(1)) {
    std::uint32_t place = (sequence * 5 + (2u * byte + 1) * kSpread) % kSlots;
    std::uint32_t key = byte | sequence / kSlots << kSingleShift;
    const std::uint32_t lastKey = key + kMostProbes * kProbeStep;
    while (entries_[place] >> kKeyShift != key && entries_[place] != kEmpty && key != lastKey) {
      place = (place + 1) % kSlots;
      key += kProbeStep;
    }
    if (entries_[place] >> kKeyShift == key) {
      sequence = place;
      continue;
    }
    // Where the search was given up the new sequence is not kept: it will only not be used.
    if (entries_[place] == kEmpty) entries_[place] = key << kKeyShift | codes.next();
    codes.put(entries_[sequence] & kCodeMask);
    if (codes.full()) begin();
    sequence = kSlots + byte;
  }
  codes.put(entries_[sequence] & kCodeMask);
  return Bytes(output_.data(), codes.finish());
}

}  // namespace orvane
