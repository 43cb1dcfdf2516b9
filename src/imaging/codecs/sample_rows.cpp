#include "imaging/codecs/sample_rows.h"

#include <bit>
#include <cstring>

#include "imaging/codecs/byte_order.h"

namespace orvane {
namespace {

bool needsSwap(const Raster& raster, SampleOrder order) {
  const bool machineIsLittle = std::endian::native == std::endian::little;
  return raster.bitsPerSample == 16 && machineIsLittle != (order == SampleOrder::LittleEndian);
}

std::uint16_t load16(const std::uint8_t* samples, std::size_t index) {
  std::uint16_t value;
  std::memcpy(&value, samples + 2 * index, sizeof value);
  return value;
}

template <bool kSwap>
void store16(std::uint8_t* samples, std::size_t index, std::uint16_t value) {
  if constexpr (kSwap) value = swapBytes(value);
  std::memcpy(samples + 2 * index, &value, sizeof value);
}

void differenceRow8(const std::uint8_t* in, std::uint8_t* out, std::size_t samples,
                    std::size_t perPixel) {
  for (std::size_t i = 0; i < perPixel; ++i) out[i] = in[i];
  for (std::size_t i = perPixel; i < samples; ++i) {
    out[i] = static_cast<std::uint8_t>(in[i] - in[i - perPixel]);
  }
}

template <bool kSwap>
void differenceRow16(const std::uint8_t* in, std::uint8_t* out, std::size_t samples,
                     std::size_t perPixel) {
  for (std::size_t i = 0; i < perPixel; ++i) store16<kSwap>(out, i, load16(in, i));
  for (std::size_t i = perPixel; i < samples; ++i) {
    const int difference = load16(in, i) - load16(in, i - perPixel);
    store16<kSwap>(out, i, static_cast<std::uint16_t>(difference));
  }
}

}  // namespace

bool suitsHorizontalPredictor(const Raster& raster) {
  return raster.bitsPerSample >= 8 && raster.model != ColourModel::Palette;
}

void copyRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
              std::uint8_t* out) {
  const std::size_t size = rows * raster.rowBytes();
  const std::uint8_t* in = raster.row(top);
  if (!needsSwap(raster, order)) {
    std::memcpy(out, in, size);
    return;
  }
  for (std::size_t i = 0; i < size / 2; ++i) store16<true>(out, i, load16(in, i));
}

void differenceRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
                    std::uint8_t* out) {
  const bool swap = needsSwap(raster, order);
  const std::size_t perPixel = raster.samplesPerPixel;
  const std::size_t samples = raster.width * perPixel;
  for (std::uint32_t y = top; y < top + rows; ++y, out += raster.rowBytes()) {
    const std::uint8_t* in = raster.row(y);
    if (raster.bitsPerSample == 8) {
      differenceRow8(in, out, samples, perPixel);
    } else if (swap) {
      differenceRow16<true>(in, out, samples, perPixel);
    } else {
      differenceRow16<false>(in, out, samples, perPixel);
    }
  }
}

}  // namespace orvane
