#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Bytes.h"

namespace orvane {

/// What the sample values of a raster mean.
enum class ColourModel {
  MinIsWhite,  ///< gray or bilevel, 0 is white
  MinIsBlack,  ///< gray or bilevel, 0 is black
  Palette,     ///< index into `RasterForm::palette`
  Rgb,
  Cmyk,
};

/// What the one extra sample after the colour samples means.
enum class ExtraSample { None, Unspecified, AssociatedAlpha, UnassociatedAlpha };

/// How the pixels of a raster are stored: their depth and what their samples mean.
struct RasterForm {
  std::uint16_t bitsPerSample = 1;    ///< 1, 2, 4, 8 or 16
  std::uint16_t samplesPerPixel = 1;  ///< with the extra sample, if there is one
  ColourModel model = ColourModel::MinIsWhite;
  ExtraSample extraSample = ExtraSample::None;
  /// TIFF 6.0 ColorMap: all reds, all greens, all blues, 0 to 65535. Only for Palette.
  std::vector<std::uint16_t> palette = {};

  std::uint16_t bitsPerPixel() const {
    return static_cast<std::uint16_t>(bitsPerSample * samplesPerPixel);
  }
  std::size_t rowBytes(std::uint32_t width) const {
    return (static_cast<std::size_t>(width) * bitsPerPixel() + 7) / 8;
  }
};

/// The decoded pixels of one page, upright, with the sample values of the file.
struct Raster : RasterForm {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// Row after row from the top; a row begins on a byte, samples are interleaved, the first one in
  /// the most significant bits; 16-bit samples in the byte order of the machine. Padding bits are
  /// 0.
  Bytes pixels;

  using RasterForm::rowBytes;
  std::size_t rowBytes() const { return rowBytes(width); }
  std::uint8_t* row(std::uint32_t y) { return pixels.data() + y * rowBytes(); }
  const std::uint8_t* row(std::uint32_t y) const { return pixels.data() + y * rowBytes(); }
};

/// No page takes more memory than this.
inline constexpr std::uint64_t kMaxPageBytes = std::uint64_t{1} << 30;

/// Throws Failure when `bytes` are more than a page may take.
void requirePageMemory(std::uint64_t bytes);

/// A raster of a form and a size, all bits 0. Throws Failure for more than `kMaxPageBytes`.
Raster emptyRaster(const RasterForm& form, std::uint32_t width, std::uint32_t height);

/// The byte that fills paper (white) in this form; for a palette its brightest entry.
std::uint8_t paperByte(const RasterForm& form);

/// A rectangle of pixels.
struct PageArea {
  std::uint32_t x = 0;
  std::uint32_t y = 0;
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
};

/// Makes an area paper. Its edges are on byte boundaries, or on the right edge of the raster.
void fillWithPaper(Raster& raster, const PageArea& area);

/// Sets the padding bits after each row to 0.
void clearPadding(Raster& raster);

/// Sample `index` of a row of 1, 2, 4 or 8-bit samples.
inline std::uint8_t shallowSample(const std::uint8_t* row, std::size_t index, unsigned bits) {
  const std::size_t position = index * bits;
  const unsigned shift = 8 - bits - static_cast<unsigned>(position % 8);
  return static_cast<std::uint8_t>(row[position / 8] >> shift & ((1U << bits) - 1));
}

/// Puts a sample of 1, 2, 4 or 8 bits into a row.
inline void putShallowSample(std::uint8_t* row, std::size_t index, unsigned bits,
                             std::uint8_t value) {
  const std::size_t position = index * bits;
  const unsigned shift = 8 - bits - static_cast<unsigned>(position % 8);
  const unsigned mask = ((1U << bits) - 1) << shift;
  std::uint8_t& byte = row[position / 8];
  byte = static_cast<std::uint8_t>((byte & ~mask) | static_cast<unsigned>(value) << shift);
}

/// The brightness of a colour in the scale of its components (ITU-R BT.601 weights).
inline std::uint32_t brightness(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return (299 * red + 587 * green + 114 * blue + 500) / 1000;
}

/// The brightness of a palette entry, 0 to 65535.
inline std::uint32_t paletteBrightness(const RasterForm& form, std::size_t entry) {
  const std::size_t entries = form.palette.size() / 3;
  return brightness(form.palette[entry], form.palette[entries + entry],
                    form.palette[2 * entries + entry]);
}

}  // namespace orvane
