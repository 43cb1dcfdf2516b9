#include "imaging/tiff/tiff_decode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/raster/lab.h"
#include "imaging/raster/orientation.h"
#include "imaging/tiff/TiffBlockReader.h"
#include "imaging/tiff/tiff_rgba.h"
#include "imaging/tiff/tiff_strips.h"

namespace orvane {
namespace {

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

/// A strip or tile of the page, or its part of one plane.
struct Block {
  std::uint32_t index;
  PageArea area;
  std::uint16_t firstSample;  ///< of the page's pixel
  std::uint16_t samples;      ///< of a pixel in the block
};

/// Fills a raster, which has the size of the stored page, with the kept samples of the page's
/// strips, tiles or planes, and collects the areas for which there are none.
class SampleDecoder {
 public:
  SampleDecoder(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                Raster& raster, std::vector<PageArea>& missing)
      : layout_(layout),
        codedRows_(codedRows),
        raster_(raster),
        missing_(missing),
        reader_(tiff, layout) {
    const std::size_t samples = layout.separatePlanes ? 1 : layout.samplesPerPixel;
    rowBytes_ = (layout.blockWidth * samples * layout.bitsPerSample + 7) / 8;
    // libtiff must agree on the size of a row before it writes into our memory.
    const std::uint64_t theirs = layout.tiled
                                     ? static_cast<std::uint64_t>(TIFFTileRowSize(tiff.get()))
                                     : TIFFScanlineSize64(tiff.get());
    if (theirs != rowBytes_) throw tiff.failure("the size of its rows makes no sense");
  }

  BlockTally decode() {
    const auto planes =
        static_cast<std::uint16_t>(layout_.separatePlanes ? raster_.samplesPerPixel : 1);
    const auto samples =
        static_cast<std::uint16_t>(layout_.separatePlanes ? 1 : layout_.samplesPerPixel);
    for (std::uint16_t plane = 0; plane < planes; ++plane) {
      layout_.forEachArea([&](const PageArea& area, std::uint32_t index) {
        decode(Block{plane * layout_.areaCount() + index, area, plane, samples});
      });
    }
    return reader_.tally();
  }

 private:
  void decode(const Block& block) {
    if (!layout_.isStoredAsKept()) {
      pickSamples(block);
    } else if (layout_.tiled) {
      placeTile(block);
    } else {
      fillRows(block);
    }
  }

  // A strip whose rows are those of the raster is decoded into it.
  void fillRows(const Block& block) {
    const std::uint32_t coded = codedRows_.empty() ? block.area.rows : codedRows_.at(block.index);
    const std::uint32_t rows = std::min(block.area.rows, coded);
    noteMissing(block, rows == 0
                           ? 0
                           : reader_.read(block.index, raster_.row(block.area.y), rows, rowBytes_));
  }

  // The rows of a tile are parts of the rows of the raster.
  void placeTile(const Block& block) {
    const std::size_t pixelBits = raster_.bitsPerPixel();
    const std::uint32_t rows = decodeAside(block);
    for (std::uint32_t y = 0; y < rows; ++y) {
      std::memcpy(raster_.row(block.area.y + y) + block.area.x * pixelBits / 8,
                  decoded_.data() + y * rowBytes_, (block.area.columns * pixelBits + 7) / 8);
    }
  }

  // A plane has one sample of each pixel; other pixels have samples that are not kept.
  void pickSamples(const Block& block) {
    const std::size_t step = raster_.samplesPerPixel;
    const SampleCopy samples{layout_.bitsPerSample, block.samples, step,
                             std::min<std::size_t>(block.samples, step)};
    const std::uint32_t rows = decodeAside(block);
    for (std::uint32_t y = 0; y < rows; ++y) {
      samples.copy(decoded_.data() + y * rowBytes_, raster_.row(block.area.y + y),
                   block.area.x * step + block.firstSample, block.area.columns);
    }
  }

  // Returns the number of rows of the page that were decoded.
  std::uint32_t decodeAside(const Block& block) {
    const std::uint32_t rows = layout_.tiled ? layout_.blockHeight : block.area.rows;
    decoded_.assign(rows * rowBytes_, paperByte(raster_));
    const std::uint32_t decoded = reader_.read(block.index, decoded_.data(), rows, rowBytes_);
    noteMissing(block, decoded);
    return std::min(decoded, block.area.rows);
  }

  void noteMissing(const Block& block, std::uint32_t decodedRows) {
    PageArea area = block.area;
    if (decodedRows >= area.rows) return;
    area.y += decodedRows;
    area.rows -= decodedRows;
    missing_.push_back(area);
  }

  const TiffLayout& layout_;
  const StripRows& codedRows_;
  Raster& raster_;
  std::vector<PageArea>& missing_;
  TiffBlockReader reader_;
  std::size_t rowBytes_;
  Bytes decoded_;  ///< a whole block
};

struct Decoding {
  Examined<Raster> page;
  bool foundNothing = false;  ///< damaged, and without a row that was decoded
};

// All rows are the same: paper alone, or what a JPEG decoder fills in for missing data.
bool isBlank(const Raster& raster) {
  const std::size_t rowBytes = raster.rowBytes();
  return std::memcmp(raster.pixels.data(), raster.pixels.data() + rowBytes,
                     raster.pixels.size() - rowBytes) == 0;
}

Raster labPageToRgb(const TiffHandle& tiff, const TiffLayout& layout, const Raster& raster) {
  const auto coding =
      layout.photometric == PHOTOMETRIC_ICCLAB ? LabCoding::Icc : LabCoding::CieSigned;
  float* white = nullptr;
  const bool hasWhite = TIFFGetField(tiff.get(), TIFFTAG_WHITEPOINT, &white) == 1;
  return labToRgb(raster, coding, hasWhite ? Chromaticity{white[0], white[1]} : kD50);
}

Decoding decodeRows(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  const RasterForm form = layout.sampleForm();
  const std::size_t size = form.rowBytes(layout.width) * layout.height;
  // Filled with paper, because libtiff leaves out rows of a fax strip without saying so.
  Raster raster{form, layout.width, layout.height, Bytes(size, paperByte(form))};
  std::vector<PageArea> missing;
  const auto [tally, messages] = tiff.listen([&] {
    return layout.throughRgbaReader
               ? decodeThroughRgba(tiff, layout, raster, missing)
               : SampleDecoder(tiff, layout, codedRows, raster, missing).decode();
  });
  if (layout.isLab()) raster = labPageToRgb(tiff, layout, raster);
  for (const PageArea& area : missing) fillWithPaper(raster, area);
  clearPadding(raster);

  Examined<Raster> page;
  page.data.damage = messages.damage();
  if (!page.data.damage) page.data.damage = tally.damage;
  const bool foundNothing = page.data.damage && (!tally.anyRow || isBlank(raster));
  page.value = toUpright(std::move(raster), layout.orientation);
  page.data.earlyEnd = earlyEndOf(codedRows, layout.height);
  return {std::move(page), foundNothing};
}

// A JBIG stream begins with its own size (ITU-T T.82 section 6.2.2), and its decoder takes memory
// for it. libtiff reads and writes it with its bits reversed in fill order 1.
void requireHonestJbig(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_JBIG) return;
  std::array<std::uint8_t, 12> head{};
  tiff.file().readAt(TIFFGetStrileOffset(tiff.get(), 0), head);
  if (fillOrderOf(tiff) == FILLORDER_MSB2LSB) TIFFReverseBits(head.data(), head.size());
  const auto number = [&head](std::size_t at) {
    return std::uint32_t{head[at]} << 24 | head[at + 1] << 16 | head[at + 2] << 8 | head[at + 3];
  };
  if (head[2] != 1 || number(4) != layout.width || number(8) != layout.height) {
    throw tiff.failure("its JBIG stream is of another size");
  }
}

}  // namespace

void prepareDecoder(TiffHandle& tiff, const TiffLayout& layout) {
  requireHonestJbig(tiff, layout);
  TIFF* const handle = tiff.get();
  // A photometric interpretation that is not stated is missed by the decoders.
  TIFFSetField(handle, TIFFTAG_PHOTOMETRIC, layout.photometric);
  if (layout.isSgiLog()) TIFFSetField(handle, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_8BIT);
  if (layout.compression == COMPRESSION_ADOBE_DEFLATE ||
      layout.compression == COMPRESSION_DEFLATE) {
    // With libdeflate, libtiff leaves out the end of a strip that holds more than is asked for.
    TIFFSetField(handle, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
  }
  if (layout.throughRgbaReader || layout.isLogarithmic()) {
    requireRgbaReader(tiff);
  } else if (layout.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(handle, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  }
}

// libtiff takes the end of Group 3 rows for a damaged row. The rows before it are then decoded
// again without it.
Examined<Raster> decodeTiff(TiffHandle& tiff, const TiffLayout& layout,
                            const StripRows& codedRows) {
  Decoding decoding = decodeRows(tiff, layout, codedRows);
  if (!decoding.page.data.damage) return std::move(decoding.page);
  if (const auto rows = rowsBeforeReturnToControl(tiff, layout)) {
    Decoding again = decodeRows(tiff, layout, *rows);
    if (!again.page.data.damage) return std::move(again.page);
  }
  if (decoding.foundNothing) {
    throw tiff.failure("the page cannot be decoded: " + *decoding.page.data.damage);
  }
  return std::move(decoding.page);
}

}  // namespace orvane
