#include "imaging/page/TiffLayout.h"

#include <algorithm>
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

void readSamples(const TiffHandle& tiff, TiffLayout& layout) {
  TIFF* const handle = tiff.get();
  layout.bitsPerSample = fieldOr(handle, TIFFTAG_BITSPERSAMPLE, std::uint16_t{1});
  layout.samplesPerPixel = fieldOr(handle, TIFFTAG_SAMPLESPERPIXEL, std::uint16_t{1});
  layout.compression = fieldOr(handle, TIFFTAG_COMPRESSION, std::uint16_t{COMPRESSION_NONE});
  const auto planes = fieldOr(handle, TIFFTAG_PLANARCONFIG, std::uint16_t{PLANARCONFIG_CONTIG});
  layout.separatePlanes = planes == PLANARCONFIG_SEPARATE;
  const auto orientation = fieldOr(handle, TIFFTAG_ORIENTATION, std::uint16_t{ORIENTATION_TOPLEFT});
  if (orientation >= ORIENTATION_TOPLEFT && orientation <= ORIENTATION_LEFTBOT) {
    layout.orientation = orientation;
  }
  const auto format = fieldOr(handle, TIFFTAG_SAMPLEFORMAT, std::uint16_t{SAMPLEFORMAT_UINT});
  const bool isUnsigned = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
  if (layout.bitsPerSample > 1 && !isUnsigned) {
    throw tiff.failure("samples of format " + std::to_string(format) + " are not supported");
  }
}

void requireKnownCompression(const TiffHandle& tiff, const TiffLayout& layout) {
  switch (layout.compression) {
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
      if (layout.bitsPerSample == 1 && layout.samplesPerPixel == 1) return;
      throw tiff.failure("fax compression of a page that is not 1-bit");
    case COMPRESSION_NONE:
    case COMPRESSION_LZW:
    case COMPRESSION_OJPEG:
    case COMPRESSION_JPEG:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
    case COMPRESSION_PACKBITS:
      return;
    default:
      throw tiff.failure("compression " + std::to_string(layout.compression) + " is not supported");
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

// The raster, a second one when the page has to be turned, and one strip or tile where libtiff
// cannot decode straight into the raster.
void requireMemory(const TiffHandle& tiff, const TiffLayout& layout) {
  const Raster& form = layout.form;
  const std::uint64_t raster = std::uint64_t{form.rowBytes()} * layout.height;
  const std::uint64_t blockPixels = std::uint64_t{layout.blockWidth} * layout.blockHeight;
  std::uint64_t block = 0;
  if (layout.throughRgbaReader) {
    block = blockPixels * (sizeof(std::uint32_t) + layout.samplesPerPixel);
  } else if (layout.tiled || !layout.samplesLieAsKept()) {
    block = blockPixels * layout.samplesPerPixel * layout.bitsPerSample / 8;
  }
  try {
    requirePageMemory(raster * (layout.turnsSideways() ? 2 : 1) + block);
  } catch (const Failure& failure) {
    throw tiff.failure(failure.what());
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
  readSamples(tiff, layout);
  requireKnownCompression(tiff, layout);
  readTiffColour(tiff, layout);
  readBlocks(tiff, layout);
  requireMemory(tiff, layout);
  requireHonestByteCounts(tiff, layout);
  return layout;
}

}  // namespace orvane
