#include "imaging/page/row_to_bytes.h"

#include <algorithm>
#include <cstring>

#include "imaging/page/samples.h"

namespace orvane {

RowToBytes::RowToBytes(const Raster& form)
    : samples_(std::size_t{form.width} * form.samplesPerPixel), bits_(form.bitsPerSample) {
  if (bits_ >= 8) return;
  const unsigned scale = form.model == ColourModel::Palette ? 1 : 255 / ((1U << bits_) - 1);
  for (unsigned byte = 0; byte < spreads_.size(); ++byte) {
    const auto packed = static_cast<std::uint8_t>(byte);
    for (std::size_t i = 0; i < 8 / bits_; ++i) {
      spreads_[byte][i] = static_cast<std::uint8_t>(shallowSample(&packed, i, bits_) * scale);
    }
  }
}

void RowToBytes::spread(const std::uint8_t* row, std::uint8_t* bytes) const {
  if (bits_ == 8) {
    std::copy_n(row, samples_, bytes);
  } else if (bits_ == 16) {
    for (std::size_t i = 0; i < samples_; ++i) {
      std::uint16_t sample = 0;
      std::memcpy(&sample, row + 2 * i, sizeof sample);
      bytes[i] = static_cast<std::uint8_t>(sample >> 8);
    }
  } else {
    spreadShallow(row, bytes);
  }
}

void RowToBytes::spreadShallow(const std::uint8_t* row, std::uint8_t* bytes) const {
  const std::size_t inByte = 8 / bits_;
  std::size_t left = samples_;
  // All eight values are copied, the ones too many under the next; only the end needs care.
  for (; left >= 8; left -= inByte, bytes += inByte) {
    std::copy_n(spreads_[*row++].begin(), 8, bytes);
  }
  while (left > 0) {
    const std::size_t count = std::min(left, inByte);
    std::copy_n(spreads_[*row++].begin(), count, bytes);
    bytes += count;
    left -= count;
  }
}

}  // namespace orvane
