#include "imaging/lzw/lossless.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "foundation/WindowServices.h"
#include "imaging/lzw/LzwEncoder.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

/// True for forms whose samples are quantities of whole bytes, so that differences of neighbours
/// are small: all 8 and 16-bit ones but palettes.
bool suitsHorizontalPredictor(const Raster& raster);

/// Puts `rows` rows from `top` on into `out` as a TIFF file holds them: 16-bit samples in `order`.
/// `out` has room for them.
void copyRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
              std::uint8_t* out);

/// As `copyRows`, each sample being its difference from the same sample of the pixel to its left
/// (TIFF 6.0 section 14). For forms that suit it.
void differenceRows(const Raster& raster, std::uint32_t top, std::uint32_t rows, SampleOrder order,
                    std::uint8_t* out);

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

// Small enough for readers that decode strip by strip, or several at once; large enough for the
// LZW table, which begins anew with each strip, to fill some times.
constexpr std::size_t kStripBytes = std::size_t{128} << 10;

std::uint32_t rowsPerStrip(const Raster& raster) {
  const std::size_t rows = std::max<std::size_t>(kStripBytes / raster.rowBytes(), 1);
  return static_cast<std::uint32_t>(std::min<std::size_t>(rows, raster.height));
}

// An image of the raster whose strips `encodeRows(top, rows)` makes.
template <typename EncodeRows>
EncodedImage inStrips(const Raster& raster, Compression compression, EncodeRows encodeRows) {
  EncodedImage image = encodedFormOf(raster);
  image.compression = compression;
  image.rowsPerStrip = rowsPerStrip(raster);
  image.strips.reserve((raster.height - 1) / image.rowsPerStrip + 1);
  for (std::uint32_t top = 0; top < raster.height;) {
    const std::uint32_t rows = std::min(image.rowsPerStrip, raster.height - top);
    image.strips.push_back(encodeRows(top, rows));
    top += rows;
  }
  return image;
}

}  // namespace

EncodedImage encodeUncompressed(const Raster& raster, SampleOrder order) {
  return inStrips(raster, Compression::None, [&](std::uint32_t top, std::uint32_t rows) {
    Bytes strip(rows * raster.rowBytes());
    copyRows(raster, top, rows, order, strip.data());
    return strip;
  });
}

EncodedImage encodeLzw(const Raster& raster, SampleOrder order) {
  const bool predictor = suitsHorizontalPredictor(raster);
  const auto prepareRows = predictor ? differenceRows : copyRows;
  LzwEncoder encoder;
  Bytes samples;
  EncodedImage image =
      inStrips(raster, Compression::Lzw, [&](std::uint32_t top, std::uint32_t rows) {
        samples.resize(rows * raster.rowBytes());
        prepareRows(raster, top, rows, order, samples.data());
        windowServices().yield();  // a colour page takes a fifth of a second
        return encoder.encode(samples);
      });
  image.horizontalPredictor = predictor;
  return image;
}

}  // namespace orvane
