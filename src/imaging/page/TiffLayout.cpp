#include "imaging/page/TiffLayout.h"

#include <algorithm>
#include <array>
#include <string>

#include "imaging/page/tiff_colour.h"

namespace orvane {
namespace {

constexpr std::uint32_t kLongestSide = 1'000'000;

template <typename Value>
Value fieldOr(TIFF* tiff, ttag_t tag, Value otherwise) {
  Value value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

void readSize(const TiffHandle& tiff, TiffLayout& layout) {
  layout.width = fieldOr(tiff.get(), TIFFTAG_IMAGEWIDTH, std::uint32_t{0});
  layout.height = fieldOr(tiff.get(), TIFFTAG_IMAGELENGTH, std::uint32_t{0});
  const auto [shorter, longer] = std::minmax(layout.width, layout.height);
  if (shorter == 0 || longer > kLongestSide) {
    throw tiff.failure("no page has " + std::to_string(layout.width) + " x " +
                       std::to_string(layout.height) + " pixels");
  }
}

bool isSgiLog(const TiffLayout& layout) {
  return layout.compression == COMPRESSION_SGILOG || layout.compression == COMPRESSION_SGILOG24;
}

// SGILog keeps logarithms; libtiff makes 8-bit gray or RGB of them as it decodes.
void readCompression(const TiffHandle& tiff, TiffLayout& layout) {
  layout.compression = fieldOr(tiff.get(), TIFFTAG_COMPRESSION, std::uint16_t{COMPRESSION_NONE});
  if (TIFFIsCODECConfigured(layout.compression) == 0) {
    throw tiff.failure("compression " + std::to_string(layout.compression) +
                       " is not supported by the installed libtiff");
  }
  if (isSgiLog(layout)) {
    TIFFSetField(tiff.get(), TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_8BIT);
  }
}

// Signed samples pass as the bits they are, as in libtiff's RGBA reader: what a scanner labels so
// is light that it has measured from 0, which has no sign.
void requireWholeNumbers(const TiffHandle& tiff, const TiffLayout& layout) {
  const auto format = fieldOr(tiff.get(), TIFFTAG_SAMPLEFORMAT, std::uint16_t{SAMPLEFORMAT_UINT});
  const bool isWhole =
      format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_INT || format == SAMPLEFORMAT_VOID;
  if (layout.bitsPerSample > 1 && !isWhole) {
    throw tiff.failure("samples of format " + std::to_string(format) + " are not supported");
  }
}

void readSamples(const TiffHandle& tiff, TiffLayout& layout) {
  TIFF* const handle = tiff.get();
  layout.bitsPerSample = fieldOr(handle, TIFFTAG_BITSPERSAMPLE, std::uint16_t{1});
  layout.samplesPerPixel = fieldOr(handle, TIFFTAG_SAMPLESPERPIXEL, std::uint16_t{1});
  const auto planes = fieldOr(handle, TIFFTAG_PLANARCONFIG, std::uint16_t{PLANARCONFIG_CONTIG});
  layout.separatePlanes = planes == PLANARCONFIG_SEPARATE;
  const auto orientation = fieldOr(handle, TIFFTAG_ORIENTATION, std::uint16_t{ORIENTATION_TOPLEFT});
  if (orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_LEFTBOT) {
    layout.orientation = orientation;
  }
  requireWholeNumbers(tiff, layout);
  const bool isBilevel = layout.bitsPerSample == 1 && layout.samplesPerPixel == 1;
  if (!isBilevel && (layout.isFax() || layout.compression == COMPRESSION_JBIG)) {
    throw tiff.failure("fax compression of a page that is not 1-bit");
  }
}

void readBlocks(const TiffHandle& tiff, TiffLayout& layout) {
  TIFF* const handle = tiff.get();
  layout.tiled = TIFFIsTiled(handle) != 0;
  if (layout.tiled) {
    layout.blockWidth = fieldOr(handle, TIFFTAG_TILEWIDTH, std::uint32_t{0});
    layout.blockHeight = fieldOr(handle, TIFFTAG_TILELENGTH, std::uint32_t{0});
    layout.blockCount = TIFFNumberOfTiles(handle);
  } else {
    layout.blockWidth = layout.width;
    layout.blockHeight =
        std::min(layout.height, fieldOr(handle, TIFFTAG_ROWSPERSTRIP, layout.height));
    layout.blockCount = TIFFNumberOfStrips(handle);
  }
  const bool fits = layout.blockWidth > 0 && layout.blockHeight > 0 && layout.blockCount > 0 &&
                    layout.blockWidth <= kLongestSide && layout.blockHeight <= kLongestSide;
  if (!fits) throw tiff.failure("the size of its strips or tiles makes no sense");
  const std::uint64_t bitsAcross =
      std::uint64_t{layout.blockWidth} * layout.bitsPerSample * layout.samplesPerPixel;
  if (layout.tiled && (layout.blockWidth % 8 != 0 || bitsAcross % 8 != 0)) {
    throw tiff.failure("tiles of " + std::to_string(layout.blockWidth) + " pixels across");
  }
}

// What libtiff takes to decode one pixel of a strip or tile, beside the bytes it hands out.
std::uint64_t decoderBytesPerPixel(const TiffLayout& layout, std::uint64_t sampleBytes) {
  switch (layout.compression) {
    case COMPRESSION_SGILOG:
    case COMPRESSION_SGILOG24:
      return 4;
    case COMPRESSION_WEBP:
      return 5;  // a 32-bit pixel and its alpha
    case COMPRESSION_PIXARLOG:
      return 2 * layout.samplesPerPixel;
    case COMPRESSION_LERC:
      return 2 * sampleBytes;  // and a mask
    default:
      return 0;
  }
}

// The raster, a second one when the page has to be turned, and one strip or tile: for its decoder,
// and where libtiff cannot decode straight into the raster.
void requireMemory(const TiffHandle& tiff, const TiffLayout& layout) {
  const Raster& form = layout.form;
  const std::uint64_t raster = std::uint64_t{form.rowBytes()} * layout.height;
  const std::uint64_t blockPixels = std::uint64_t{layout.blockWidth} * layout.blockHeight;
  const std::uint64_t pixelBits = std::uint64_t{layout.samplesPerPixel} * layout.bitsPerSample;
  std::uint64_t block = blockPixels * decoderBytesPerPixel(layout, (pixelBits + 7) / 8);
  if (layout.throughRgbaReader) {
    block += blockPixels * (sizeof(std::uint32_t) + (pixelBits + 7) / 8);
  } else if (layout.tiled || !layout.samplesLieAsKept()) {
    block += blockPixels * pixelBits / 8;
  }
  try {
    requirePageMemory(raster * (layout.turnsSideways() ? 2 : 1) + block);
  } catch (const Failure& failure) {
    throw tiff.failure(failure.what());
  }
}

// A JBIG stream begins with its own size (ITU-T T.82 section 6.2.2), and its decoder takes memory
// for it. libtiff reads and writes it with its bits reversed in fill order 1.
void requireHonestJbig(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_JBIG) return;
  std::array<std::uint8_t, 12> head{};
  tiff.file().readAt(TIFFGetStrileOffset(tiff.get(), 0), head.data(), head.size());
  if (fieldOr(tiff.get(), TIFFTAG_FILLORDER, std::uint16_t{FILLORDER_MSB2LSB}) ==
      FILLORDER_MSB2LSB) {
    TIFFReverseBits(head.data(), head.size());
  }
  const auto number = [&head](std::size_t at) {
    return std::uint32_t{head[at]} << 24 | head[at + 1] << 16 | head[at + 2] << 8 | head[at + 3];
  };
  if (head[2] != 1 || number(4) != layout.width || number(8) != layout.height) {
    throw tiff.failure("its JBIG stream is of another size");
  }
}

// Strips that lie over one another would let a small file keep the decoder busy for hours.
void requireHonestByteCounts(const TiffHandle& tiff, const TiffLayout& layout) {
  constexpr std::uint64_t kAlwaysFine = 1U << 30;
  std::uint64_t total = 0;
  for (std::uint32_t i = 0; i < layout.blockCount; ++i) {
    const std::uint64_t count = TIFFGetStrileByteCount(tiff.get(), i);
    total += std::min(count, tiff.file().size());
  }
  if (total > kAlwaysFine && total / 2 > tiff.file().size()) {
    throw tiff.failure("its strips or tiles are longer than the file");
  }
}

}  // namespace

TiffLayout readTiffLayout(const TiffHandle& tiff) {
  TiffLayout layout;
  readSize(tiff, layout);
  readCompression(tiff, layout);
  readSamples(tiff, layout);
  readTiffColour(tiff, layout);
  readBlocks(tiff, layout);
  requireMemory(tiff, layout);
  requireHonestJbig(tiff, layout);
  requireHonestByteCounts(tiff, layout);
  return layout;
}

}  // namespace orvane
