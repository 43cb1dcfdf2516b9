#include "imaging/codecs/lossless.h"

#include <algorithm>

#include "foundation/WindowServices.h"
#include "imaging/codecs/LzwEncoder.h"
#include "imaging/codecs/encoded_form.h"
#include "imaging/codecs/sample_rows.h"

namespace orvane {
namespace {

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
