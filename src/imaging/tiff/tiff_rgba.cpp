#include "imaging/tiff/tiff_rgba.h"

#include <algorithm>
#include <vector>

namespace orvane {
namespace {

using AbgrPixels = std::vector<std::uint32_t>;

/// The state of the RGBA reader for one page. It delivers rows from the top; the page is brought
/// upright later.
class RgbaReader {
 public:
  explicit RgbaReader(TiffHandle& tiff) {
    constexpr int kStopOnError = 1;
    char reason[1024] = "";
    if (TIFFRGBAImageBegin(&image_, tiff.get(), kStopOnError, reason) != 1) {
      throw tiff.failure(reason);
    }
    image_.orientation = ORIENTATION_TOPLEFT;
    image_.req_orientation = ORIENTATION_TOPLEFT;
  }
  ~RgbaReader() { TIFFRGBAImageEnd(&image_); }
  RgbaReader(const RgbaReader&) = delete;
  RgbaReader& operator=(const RgbaReader&) = delete;

  bool read(const PageArea& area, AbgrPixels& pixels) {
    image_.col_offset = static_cast<int>(area.x);
    image_.row_offset = static_cast<int>(area.y);
    return TIFFRGBAImageGet(&image_, pixels.data(), area.columns, area.rows) == 1;
  }

 private:
  TIFFRGBAImage image_{};
};

void place(const AbgrPixels& pixels, const PageArea& area, Raster& raster) {
  const std::uint32_t* from = pixels.data();
  for (std::uint32_t y = 0; y < area.rows; ++y) {
    std::uint8_t* to = raster.row(area.y + y) + std::size_t{area.x} * 3;
    for (std::uint32_t x = 0; x < area.columns; ++x, ++from, to += 3) {
      to[0] = static_cast<std::uint8_t>(TIFFGetR(*from));
      to[1] = static_cast<std::uint8_t>(TIFFGetG(*from));
      to[2] = static_cast<std::uint8_t>(TIFFGetB(*from));
    }
  }
}

}  // namespace

void requireRgbaReader(TiffHandle& tiff) {
  char reason[1024] = "";
  if (TIFFRGBAImageOK(tiff.get(), reason) != 1) throw tiff.failure(reason);
}

BlockTally decodeThroughRgba(TiffHandle& tiff, const TiffLayout& layout, Raster& raster,
                             std::vector<PageArea>& missing) {
  RgbaReader reader(tiff);
  TiffBlockReader blocks(tiff, layout);
  AbgrPixels pixels(std::size_t{layout.blockWidth} * layout.blockHeight);
  bool streamEnded = false;
  layout.forEachArea([&](const PageArea& area, std::uint32_t index) {
    // Old-style JPEG is one stream: nothing follows after an error.
    const bool decoded = !streamEnded && reader.read(area, pixels);
    streamEnded = !decoded && layout.compression == COMPRESSION_OJPEG;
    for (std::uint32_t plane = 0; plane < layout.planes(); ++plane) {
      blocks.noteDecoded(plane * layout.areaCount() + index, decoded);
    }
    if (decoded) {
      place(pixels, area, raster);
    } else {
      missing.push_back(area);
    }
  });
  return blocks.tally();
}

}  // namespace orvane
