#include "imaging/lzw/lossless.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "imaging/lzw/LzwEncoder.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

// Small enough for readers that decode strip by strip, or several at once; large enough for the
// LZW dictionary, which starts empty in each strip, to fill several times.
constexpr std::size_t kStripBytes = std::size_t{128} << 10;

// An image of the raster's form, divided into strips that are still empty.
EncodedImage inEmptyStrips(const Raster& raster, Compression compression) {
  EncodedImage image = encodedFormOf(raster);
  const std::size_t rows = std::max<std::size_t>(kStripBytes / raster.rowBytes(), 1);
  image.compression = compression;
  image.rowsPerStrip = static_cast<std::uint32_t>(std::min<std::size_t>(rows, raster.height));
  image.strips.resize((raster.height - 1) / image.rowsPerStrip + 1);
  return image;
}

// The rows of one strip of an image.
struct Rows {
  std::uint32_t top;
  std::uint32_t count;
};

Rows rowsOfStrip(const EncodedImage& image, std::size_t strip) {
  const auto top = static_cast<std::uint32_t>(strip * image.rowsPerStrip);
  return {top, std::min(image.rowsPerStrip, image.height - top)};
}

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

// Puts the rows into `samples` as a TIFF file holds them: 16-bit samples in `order`.
void copySamples(const Raster& raster, Rows rows, SampleOrder order, Bytes& samples) {
  const ByteView in(raster.row(rows.top), rows.count * raster.rowBytes());
  samples.assign(in.begin(), in.end());
  if (!needsSwap(raster, order)) return;
  for (std::size_t i = 0; i < in.size() / 2; ++i)
    store16<true>(samples.data(), i, load16(in.data(), i));
}

// True for forms whose samples are quantities of whole bytes, so that differences of neighbours
// are small: all 8 and 16-bit ones except palettes.
bool suitsHorizontalPredictor(const Raster& raster) {
  return raster.bitsPerSample >= 8 && raster.model != ColourModel::Palette;
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

// As `copySamples`, each sample being its difference from the same sample of the pixel to its left
// (TIFF 6.0 section 14).
void differenceSamples(const Raster& raster, Rows rows, SampleOrder order, Bytes& samples) {
  const bool swap = needsSwap(raster, order);
  const auto differenceRow = raster.bitsPerSample == 8 ? differenceRow8
                             : swap                    ? differenceRow16<true>
                                                       : differenceRow16<false>;
  const std::size_t perPixel = raster.samplesPerPixel;
  samples.resize(rows.count * raster.rowBytes());
  for (std::uint32_t y = 0; y < rows.count; ++y) {
    differenceRow(raster.row(rows.top + y), samples.data() + y * raster.rowBytes(),
                  raster.width * perPixel, perPixel);
  }
}

}  // namespace

EncodedImage encodeUncompressed(const Raster& raster, SampleOrder order) {
  EncodedImage image = inEmptyStrips(raster, Compression::None);
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    copySamples(raster, rowsOfStrip(image, i), order, image.strips[i]);
  }
  return image;
}

EncodedImage encodeLzw(const Raster& raster, SampleOrder order,
                       const std::function<void()>& pause) {
  EncodedImage image = inEmptyStrips(raster, Compression::Lzw);
  image.horizontalPredictor = suitsHorizontalPredictor(raster);
  const auto prepare = image.horizontalPredictor ? differenceSamples : copySamples;
  LzwEncoder encoder;
  Bytes left, right;
  for (std::size_t i = 0; i < image.strips.size(); i += 2) {
    const bool isPair = i + 1 < image.strips.size();
    prepare(raster, rowsOfStrip(image, i), order, left);
    if (isPair) prepare(raster, rowsOfStrip(image, i + 1), order, right);
    pause();
    auto [leftStrip, rightStrip] = encoder.encode({left, isPair ? ByteView(right) : ByteView()});
    image.strips[i] = std::move(leftStrip);
    if (isPair) image.strips[i + 1] = std::move(rightStrip);
  }
  return image;
}

}  // namespace orvane
