#include <algorithm>
#include <cstring>

#include "imaging/page/samples.h"
#include "imaging/page/tiff_blocks.h"
#include "imaging/page/tiff_decode.h"

namespace orvane {
namespace {

/// A strip or tile on the page, and the samples it holds.
struct Block {
  std::uint32_t index;
  std::uint32_t x, y;
  std::uint32_t columns, rows;  ///< inside the page
  std::uint16_t firstSample;    ///< of the page's pixel
  std::uint16_t samples;        ///< of a pixel in the block
};

/// Calls `visit` for each block whose samples are kept.
template <typename Visit>
void forEachBlock(const TiffLayout& layout, Visit visit) {
  const std::uint32_t across = (layout.width - 1) / layout.blockWidth + 1;
  const std::uint32_t down = (layout.height - 1) / layout.blockHeight + 1;
  const auto planes =
      static_cast<std::uint16_t>(layout.separatePlanes ? layout.form.samplesPerPixel : 1);
  const auto samples =
      static_cast<std::uint16_t>(layout.separatePlanes ? 1 : layout.samplesPerPixel);
  for (std::uint16_t plane = 0; plane < planes; ++plane) {
    for (std::uint32_t i = 0; i < across * down; ++i) {
      const std::uint32_t x = i % across * layout.blockWidth;
      const std::uint32_t y = i / across * layout.blockHeight;
      visit(Block{plane * across * down + i, x, y, std::min(layout.blockWidth, layout.width - x),
                  std::min(layout.blockHeight, layout.height - y), plane, samples});
    }
  }
}

/// Copies samples of one row, of `count` pixels, between rows with different samples a pixel.
struct SampleCopy {
  unsigned bits;
  std::size_t fromStep, toStep;  ///< samples of a pixel
  std::size_t samples;           ///< to copy of each pixel

  void copy(const std::uint8_t* from, std::uint8_t* to, std::size_t firstTo,
            std::size_t count) const {
    if (bits == 8) return copyWhole<std::uint8_t>(from, to, firstTo, count);
    if (bits == 16) return copyWhole<std::uint16_t>(from, to, firstTo, count);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t s = 0; s < samples; ++s) {
        putShallowSample(to, firstTo + i * toStep + s, bits,
                         shallowSample(from, i * fromStep + s, bits));
      }
    }
  }

  template <typename Sample>
  void copyWhole(const std::uint8_t* from, std::uint8_t* to, std::size_t firstTo,
                 std::size_t count) const {
    const auto* source = reinterpret_cast<const Sample*>(from);
    auto* target = reinterpret_cast<Sample*>(to) + firstTo;
    for (std::size_t i = 0; i < count; ++i, source += fromStep, target += toStep) {
      for (std::size_t s = 0; s < samples; ++s) target[s] = source[s];
    }
  }
};

std::size_t blockRowBytes(const TiffLayout& layout, const Block& block) {
  const std::size_t bits = std::size_t{layout.blockWidth} * block.samples * layout.bitsPerSample;
  return (bits + 7) / 8;
}

void place(const Bytes& decoded, std::size_t rowBytes, const TiffLayout& layout, const Block& block,
           Raster& raster) {
  const std::size_t pixelBits = raster.bitsPerPixel();
  const SampleCopy samples{
      layout.bitsPerSample, block.samples, raster.samplesPerPixel,
      std::min<std::size_t>(block.samples, raster.samplesPerPixel - block.firstSample)};
  for (std::uint32_t y = 0; y < block.rows; ++y) {
    const std::uint8_t* from = decoded.data() + y * rowBytes;
    std::uint8_t* to = raster.row(block.y + y);
    if (layout.samplesLieAsKept()) {
      std::memcpy(to + block.x * pixelBits / 8, from, (block.columns * pixelBits + 7) / 8);
    } else {
      samples.copy(from, to, std::size_t{block.x} * raster.samplesPerPixel + block.firstSample,
                   block.columns);
    }
  }
}

// libtiff and this file must agree on the size of a row before it writes into our memory.
void requireRowBytes(const TiffHandle& tiff, const TiffLayout& layout, std::size_t rowBytes) {
  const std::uint64_t theirs = layout.tiled
                                   ? static_cast<std::uint64_t>(TIFFTileRowSize(tiff.get()))
                                   : TIFFScanlineSize64(tiff.get());
  if (theirs != rowBytes) throw tiff.failure("the size of its rows makes no sense");
}

}  // namespace

BlockTally decodeSamples(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                         Raster& raster) {
  TiffBlockReader reader(tiff, layout);
  const bool straightIntoRaster = !layout.tiled && layout.samplesLieAsKept();
  Bytes decoded;
  forEachBlock(layout, [&](const Block& block) {
    const std::size_t rowBytes = blockRowBytes(layout, block);
    if (block.index == 0) requireRowBytes(tiff, layout, rowBytes);
    if (straightIntoRaster) {
      const std::uint32_t rows =
          codedRows.empty() ? block.rows : std::min(block.rows, codedRows.at(block.index));
      if (rows > 0) reader.read(block.index, raster.row(block.y), rows, rowBytes);
      return;
    }
    const std::uint32_t rows = layout.tiled ? layout.blockHeight : block.rows;
    decoded.assign(rows * rowBytes, paperByte(raster));
    reader.read(block.index, decoded.data(), rows, rowBytes);
    place(decoded, rowBytes, layout, block, raster);
  });
  return reader.tally();
}

}  // namespace orvane
