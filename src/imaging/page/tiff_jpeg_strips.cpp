#include <utility>

#include "imaging/page/tiff_strips.h"

namespace orvane {
namespace {

constexpr std::size_t kMarkerSize = 2;  // of start-of-image and end-of-image

bool isPlainJpeg(const TiffLayout& layout) {
  const bool gray = layout.photometric == PHOTOMETRIC_MINISBLACK && layout.samplesPerPixel == 1;
  const bool colour = layout.photometric == PHOTOMETRIC_YCBCR && layout.samplesPerPixel == 3;
  return layout.compression == COMPRESSION_JPEG && layout.bitsPerSample == 8 && (gray || colour) &&
         !layout.tiled && !layout.separatePlanes && layout.orientation == ORIENTATION_TOPLEFT;
}

// The tables that the strips share, without the markers around them.
ByteView sharedTables(TIFF* tiff) {
  std::uint32_t size = 0;
  const std::uint8_t* tables = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &size, &tables) == 0 || size < 2 * kMarkerSize) {
    return {};
  }
  return {tables + kMarkerSize, size - 2 * kMarkerSize};
}

// TIFF Technical Note 2: a strip is a JPEG stream whose tables may stand in the directory.
void putTablesIn(Bytes& strip, ByteView tables) {
  if (strip.size() < kMarkerSize) return;
  strip.insert(strip.begin() + kMarkerSize, tables.begin(), tables.end());
}

}  // namespace

std::optional<EncodedImage> readJpegStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (!isPlainJpeg(layout)) return std::nullopt;
  std::optional<std::vector<Bytes>> strips = readStrips(tiff, layout);
  if (!strips) return std::nullopt;

  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.bitsPerSample = layout.bitsPerSample;
  image.samplesPerPixel = layout.samplesPerPixel;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = Compression::Jpeg;
  image.rowsPerStrip = layout.blockHeight;
  image.strips = *std::move(strips);
  const ByteView tables = sharedTables(tiff.get());
  for (Bytes& strip : image.strips) putTablesIn(strip, tables);
  return image;
}

}  // namespace orvane
