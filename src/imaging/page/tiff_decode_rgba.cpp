#include <algorithm>
#include <vector>

#include "imaging/page/tiff_decode.h"

namespace orvane {
namespace {

using AbgrPixels = std::vector<std::uint32_t>;

bool readBlock(TIFF* tiff, const TiffLayout& layout, std::uint32_t x, std::uint32_t y,
               AbgrPixels& pixels) {
  constexpr int kStopOnError = 1;
  const int done = layout.tiled ? TIFFReadRGBATileExt(tiff, x, y, pixels.data(), kStopOnError)
                                : TIFFReadRGBAStripExt(tiff, y, pixels.data(), kStopOnError);
  return done == 1;
}

// libtiff's RGBA blocks have their last row first: a tile all of its rows, a strip those that it
// has.
void place(const AbgrPixels& pixels, const TiffLayout& layout, std::uint32_t x, std::uint32_t y,
           Raster& raster) {
  const std::uint32_t columns = std::min(layout.blockWidth, layout.width - x);
  const std::uint32_t rows = std::min(layout.blockHeight, layout.height - y);
  const std::uint32_t storedRows = layout.tiled ? layout.blockHeight : rows;
  for (std::uint32_t i = 0; i < rows; ++i) {
    const std::uint32_t* from = pixels.data() + std::size_t{storedRows - 1 - i} * layout.blockWidth;
    std::uint8_t* to = raster.row(y + i) + std::size_t{x} * 3;
    for (std::uint32_t column = 0; column < columns; ++column, to += 3) {
      to[0] = static_cast<std::uint8_t>(TIFFGetR(from[column]));
      to[1] = static_cast<std::uint8_t>(TIFFGetG(from[column]));
      to[2] = static_cast<std::uint8_t>(TIFFGetB(from[column]));
    }
  }
}

}  // namespace

bool decodeThroughRgba(TiffHandle& tiff, const TiffLayout& layout, Raster& raster) {
  // The page is brought upright here; libtiff would only do half of it.
  TIFFSetField(tiff.get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  AbgrPixels pixels(std::size_t{layout.blockWidth} * layout.blockHeight);
  bool whole = true;
  for (std::uint32_t y = 0; y < layout.height; y += layout.blockHeight) {
    for (std::uint32_t x = 0; x < layout.width; x += layout.blockWidth) {
      std::fill(pixels.begin(), pixels.end(), 0xFFFFFFFFU);
      if (!readBlock(tiff.get(), layout, x, y, pixels)) whole = false;
      // Old-style JPEG is one stream: behind an error nothing comes any more.
      if (!whole && layout.compression == COMPRESSION_OJPEG) return false;
      place(pixels, layout, x, y, raster);
    }
  }
  return whole;
}

}  // namespace orvane
