#include "imaging/group4/ChangingElements.h"

#include <bit>
#include <cstring>

#include "imaging/raster/bit_streams.h"

namespace orvane::group4 {
namespace {

constexpr std::int32_t kWordBits = 64;

// Appends the positions of the set bits of `changes`, the highest one standing at `base`.
std::int32_t* appendPositions(std::uint64_t changes, std::int32_t base, std::int32_t* out) {
  while (changes != 0) {
    const int place = std::countl_zero(changes);
    *out++ = base + place;
    changes ^= std::uint64_t{1} << 63 >> place;
  }
  return out;
}

// The last word of a row, which may be shorter; the bits behind the row are 0.
std::uint64_t loadLastWord(const std::uint8_t* at, std::int32_t bits) {
  std::uint8_t padded[8] = {};
  std::memcpy(padded, at, static_cast<std::size_t>((bits + 7) / 8));
  return loadBigEndian64(padded) >> (kWordBits - bits) << (kWordBits - bits);
}

}  // namespace

void scanChanges(const std::uint8_t* pixels, ChangingElements& row) {
  const std::int32_t width = row.width();
  std::int32_t* out = row.first();
  std::uint64_t lastPixel = 0;  // of the word before, in the highest bit
  std::int32_t x = 0;
  for (; width - x >= kWordBits; x += kWordBits, pixels += sizeof(std::uint64_t)) {
    const std::uint64_t word = loadBigEndian64(pixels);
    out = appendPositions(word ^ (word >> 1 | lastPixel), x, out);
    lastPixel = word << 63;
  }
  if (x < width) {
    const std::uint64_t word = loadLastWord(pixels, width - x);
    out = appendPositions(word ^ (word >> 1 | lastPixel), x, out);
    if (out != row.first() && out[-1] == width) --out;
  }
  row.finish(static_cast<std::size_t>(out - row.first()));
}

}  // namespace orvane::group4
