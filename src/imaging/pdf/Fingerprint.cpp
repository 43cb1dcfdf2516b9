#include "imaging/pdf/Fingerprint.h"

#include <algorithm>
#include <bit>

namespace orvane {
namespace {

// Odd multipliers with well-spread bits; one round each of multiply, rotate and fold.
constexpr std::uint64_t kFirstFactor = 0x9E3779B97F4A7C15;
constexpr std::uint64_t kSecondFactor = 0xC2B2AE3D27D4EB4F;

std::uint64_t spread(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
  value = (value ^ value >> 27) * 0x94D049BB133111EB;
  return value ^ value >> 31;
}

std::uint64_t littleEndianWord(ByteView bytes) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) word |= std::uint64_t{bytes[i]} << 8 * i;
  return word;
}

}  // namespace

void Fingerprint::mix(std::uint64_t word) {
  first_ = std::rotl(first_ ^ word * kFirstFactor, 29) * kSecondFactor;
  second_ = (std::rotl(second_, 31) + word) * kFirstFactor;
}

void Fingerprint::add(ByteView bytes) {
  const std::uint64_t length = bytes.size();
  while (!bytes.empty()) {
    const std::size_t size = std::min<std::size_t>(bytes.size(), 8);
    mix(littleEndianWord(bytes.first(size)));
    bytes = bytes.subspan(size);
  }
  mix(length);
}

void Fingerprint::add(std::string_view text) {
  add(ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::string Fingerprint::hex() const {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (std::uint64_t half : {spread(first_ + second_), spread(second_ ^ std::rotl(first_, 17))}) {
    for (int shift = 60; shift >= 0; shift -= 4) digits += kDigits[half >> shift & 15];
  }
  return digits;
}

}  // namespace orvane
