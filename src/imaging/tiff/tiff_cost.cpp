#include "imaging/tiff/tiff_cost.h"

#include <tiff.h>

#include "imaging/raster/Raster.h"

namespace orvane {
namespace {

// Memory that libtiff needs to decode one pixel of a strip or tile, in addition to its output.
std::uint64_t decoderBytesPerPixel(const TiffLayout& layout, std::uint64_t sampleBytes) {
  switch (layout.compression) {
    case COMPRESSION_SGILOG:
    case COMPRESSION_SGILOG24:
      return 4;
    case COMPRESSION_WEBP:
      return 5;  // a 32-bit pixel and its alpha
    case COMPRESSION_PIXARLOG:
      return std::uint64_t{2} * layout.samplesPerPixel;
    case COMPRESSION_LERC:
      return 2 * sampleBytes;  // and a mask
    default:
      return 0;
  }
}

// The decoder of a strip or tile, and one decoded aside where it cannot be decoded into the raster.
std::uint64_t blockDecodingBytes(const TiffLayout& layout) {
  const std::uint64_t pixels = std::uint64_t{layout.blockWidth} * layout.blockHeight;
  const std::uint64_t pixelBits = std::uint64_t{layout.samplesPerPixel} * layout.bitsPerSample;
  const std::uint64_t pixelBytes = (pixelBits + 7) / 8;
  const std::uint64_t decoder = pixels * decoderBytesPerPixel(layout, pixelBytes);
  if (layout.throughRgbaReader) return decoder + pixels * (sizeof(std::uint32_t) + pixelBytes);
  const bool aside = layout.tiled || !layout.isStoredAsKept();
  return decoder + (aside ? pixels * pixelBits / 8 : 0);
}

// The raster, and a second one when the page has to be turned or its colours computed.
std::uint64_t decodingBytes(const TiffLayout& layout) {
  const auto rasterBytes = [&](const RasterForm& form) {
    return std::uint64_t{form.rowBytes(layout.width)} * layout.height;
  };
  const bool needsSecond = layout.turnsSideways() || layout.isLab();
  return rasterBytes(layout.sampleForm()) + (needsSecond ? rasterBytes(layout.form) : 0) +
         blockDecodingBytes(layout);
}

}  // namespace

PageCost costOf(const TiffHandle& tiff, const TiffLayout& layout) {
  return {.file = tiff.file().wholeContent().size(),
          .blocks = layout.encodedBytes,
          .decoding = decodingBytes(layout)};
}

void requireMemory(const TiffHandle& tiff, const TiffLayout& layout) {
  try {
    requirePageMemory(costOf(tiff, layout).decoding);
  } catch (const Failure& failure) {
    throw tiff.failure(failure.what());
  }
}

}  // namespace orvane
