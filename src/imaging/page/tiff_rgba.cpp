#include "imaging/page/tiff_rgba.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace orvane {
namespace {

using AbgrPixels = std::vector<std::uint32_t>;

// ICCLab (TIFF 6.0 photometric 9) is CIELab (8) with other codes for the same numbers: a and b have
// an offset instead of a sign, and 16-bit L reaches its 100 at 0xFF00.
void iccLabToCieLab(std::uint8_t* pixel) {
  pixel[1] ^= 0x80U;
  pixel[2] ^= 0x80U;
}

void iccLabToCieLab(std::uint16_t* pixel) {
  constexpr std::uint32_t kIccWhite = 0xFF00;
  const std::uint32_t light = std::min<std::uint32_t>(pixel[0], kIccWhite);
  pixel[0] = static_cast<std::uint16_t>((light * 0xFFFFU + kIccWhite / 2) / kIccWhite);
  pixel[1] ^= 0x8000U;
  pixel[2] ^= 0x8000U;
}

template <typename Sample>
void iccLabToCieLab(std::uint8_t* samples, std::uint32_t columns, std::uint32_t rows,
                    std::int32_t skippedColumns) {
  auto* pixel = reinterpret_cast<Sample*>(samples);
  for (; rows > 0; --rows, pixel += 3 * skippedColumns) {
    for (std::uint32_t x = 0; x < columns; ++x, pixel += 3) iccLabToCieLab(pixel);
  }
}

/// The state of the RGBA reader for one page. It answers rows from the top; the page is brought
/// upright later.
class RgbaReader {
 public:
  RgbaReader(const TiffHandle& tiff, const TiffLayout& layout) {
    constexpr int kStopOnError = 1;
    char reason[1024] = "";
    if (TIFFRGBAImageBegin(&image_, tiff.get(), kStopOnError, reason) != 1) {
      throw tiff.failure(reason);
    }
    image_.orientation = ORIENTATION_TOPLEFT;
    image_.req_orientation = ORIENTATION_TOPLEFT;
    if (layout.photometric == PHOTOMETRIC_ICCLAB) {
      image_.putCieLab = image_.put.contig;
      image_.put.contig = putIccLab;
    }
  }
  ~RgbaReader() { TIFFRGBAImageEnd(&image_); }
  RgbaReader(const RgbaReader&) = delete;
  RgbaReader& operator=(const RgbaReader&) = delete;

  bool read(std::uint32_t x, std::uint32_t y, std::uint32_t columns, std::uint32_t rows,
            AbgrPixels& pixels) {
    image_.col_offset = static_cast<int>(x);
    image_.row_offset = static_cast<int>(y);
    return TIFFRGBAImageGet(&image_, pixels.data(), columns, rows) == 1;
  }

 private:
  struct Image : TIFFRGBAImage {
    tileContigRoutine putCieLab = nullptr;
  };

  // libtiff calls this with the samples of a strip or tile, which are its own to change.
  static void putIccLab(TIFFRGBAImage* image, std::uint32_t* to, std::uint32_t x, std::uint32_t y,
                        std::uint32_t columns, std::uint32_t rows, std::int32_t fromSkew,
                        std::int32_t toSkew, std::uint8_t* samples) {
    if (image->bitspersample == 16) {
      iccLabToCieLab<std::uint16_t>(samples, columns, rows, fromSkew);
    } else {
      iccLabToCieLab<std::uint8_t>(samples, columns, rows, fromSkew);
    }
    static_cast<Image*>(image)->putCieLab(image, to, x, y, columns, rows, fromSkew, toSkew,
                                          samples);
  }

  Image image_{};
};

void place(const AbgrPixels& pixels, std::uint32_t x, std::uint32_t y, std::uint32_t columns,
           std::uint32_t rows, Raster& raster) {
  const std::uint32_t* from = pixels.data();
  for (std::uint32_t i = 0; i < rows; ++i) {
    std::uint8_t* to = raster.row(y + i) + std::size_t{x} * 3;
    for (std::uint32_t column = 0; column < columns; ++column, ++from, to += 3) {
      to[0] = static_cast<std::uint8_t>(TIFFGetR(*from));
      to[1] = static_cast<std::uint8_t>(TIFFGetG(*from));
      to[2] = static_cast<std::uint8_t>(TIFFGetB(*from));
    }
  }
}

}  // namespace

void requireRgbaReader(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.photometric == PHOTOMETRIC_ICCLAB) {
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CIELAB);
  }
  char reason[1024] = "";
  if (TIFFRGBAImageOK(tiff.get(), reason) != 1) throw tiff.failure(reason);
}

BlockTally decodeThroughRgba(const TiffHandle& tiff, const TiffLayout& layout, Raster& raster) {
  RgbaReader reader(tiff, layout);
  AbgrPixels pixels(std::size_t{layout.blockWidth} * layout.blockHeight);
  BlockTally tally;
  for (std::uint32_t y = 0; y < layout.height; y += layout.blockHeight) {
    for (std::uint32_t x = 0; x < layout.width; x += layout.blockWidth) {
      const std::uint32_t columns = std::min(layout.blockWidth, layout.width - x);
      const std::uint32_t rows = std::min(layout.blockHeight, layout.height - y);
      const bool whole = reader.read(x, y, columns, rows, pixels);
      tally.anyRow |= whole;
      tally.allWhole &= whole;
      // Old-style JPEG is one stream: after an error nothing more can come.
      if (!whole && layout.compression == COMPRESSION_OJPEG) return tally;
      if (whole) place(pixels, x, y, columns, rows, raster);
    }
  }
  return tally;
}

}  // namespace orvane
