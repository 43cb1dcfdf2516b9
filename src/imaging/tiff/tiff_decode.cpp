#include "imaging/tiff/tiff_decode.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/raster/Raster.h"
#include "imaging/raster/orientation.h"
#include "imaging/tiff/TiffPage.h"
#include "imaging/tiff/tiff_strips.h"

namespace orvane {
namespace {

/// The result of decoding the strips or tiles of a page.
struct BlockTally {
  bool allWhole = true;
  bool anyRow = false;  ///< at least one row of pixels could be decoded
};

/// Decodes strips and tiles one by one, and salvages what can be read of a damaged one.
class TiffBlockReader {
 public:
  TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout);

  /// Decodes block `index` to `to`, `rows` rows of `rowBytes` bytes each. Where data is missing
  /// `to` keeps its content, which must be paper.
  void read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);

  const BlockTally& tally() const { return tally_; }

 private:
  bool decode(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);
  bool decodeCut(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);
  bool givesARow(std::uint32_t index, std::size_t rowBytes);

  TiffHandle& tiff_;
  const TiffLayout& layout_;
  bool partialDataIsReadable_;
  BlockTally tally_;
};

bool hasPredictor(TIFF* tiff, std::uint16_t compression) {
  switch (compression) {
    case COMPRESSION_LZW:
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
    case COMPRESSION_LZMA:
    case COMPRESSION_ZSTD: {
      std::uint16_t predictor = PREDICTOR_NONE;
      TIFFGetFieldDefaulted(tiff, TIFFTAG_PREDICTOR, &predictor);
      return predictor != PREDICTOR_NONE;
    }
    default:
      return false;
  }
}

// What a decoder leaves in its buffer after an error lacks its last steps: the sum over a row of
// differences (TIFF 6.0 section 14) and the byte order of 16-bit samples. Others leave zeros, or
// anything.
bool leavesReadableData(TIFF* tiff, const TiffLayout& layout) {
  switch (layout.compression) {
    case COMPRESSION_WEBP:
    case COMPRESSION_LERC:
    case COMPRESSION_JBIG:
    case COMPRESSION_PIXARLOG:
    case COMPRESSION_THUNDERSCAN:
      return false;
    case COMPRESSION_NEXT:  // fills its rows with 1 bits first
      return paperByte(layout.form) == 0xFF;
    default:
      return !hasPredictor(tiff, layout.compression) &&
             (layout.bitsPerSample != 16 || TIFFIsByteSwapped(tiff) == 0);
  }
}

TiffBlockReader::TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout)
    : tiff_(tiff),
      layout_(layout),
      partialDataIsReadable_(leavesReadableData(tiff.get(), layout)) {}

void TiffBlockReader::read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                           std::size_t rowBytes) {
  // libtiff leaves out a run that ends its row; its own readers show zeros there.
  if (layout_.compression == COMPRESSION_THUNDERSCAN) std::fill_n(to, rows * rowBytes, 0);
  if (decode(index, to, rows, rowBytes)) {
    tally_.anyRow = true;
    return;
  }
  tally_.allWhole = false;
  if (!partialDataIsReadable_) {
    std::fill_n(to, rows * rowBytes, paperByte(layout_.form));
    return;
  }
  decodeCut(index, to, rows, rowBytes);
  tally_.anyRow = tally_.anyRow || givesARow(index, rowBytes);
}

bool TiffBlockReader::decode(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                             std::size_t rowBytes) {
  const auto size = static_cast<tmsize_t>(rows * rowBytes);
  return size == (layout_.tiled ? TIFFReadEncodedTile(tiff_.get(), index, to, size)
                                : TIFFReadEncodedStrip(tiff_.get(), index, to, size));
}

// libtiff does not touch a block that the end of the file cuts; its beginning is still there.
bool TiffBlockReader::decodeCut(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                                std::size_t rowBytes) {
  constexpr std::uint64_t kMostBytes = 256U << 20;
  const std::uint64_t fileSize = tiff_.file().size();
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_.get(), index);
  const std::uint64_t count = TIFFGetStrileByteCount(tiff_.get(), index);
  if (offset == 0 || offset >= fileSize || count <= fileSize - offset) return false;
  Bytes data(static_cast<std::size_t>(std::min(fileSize - offset, kMostBytes)));
  data.resize(tiff_.file().readAt(offset, data.data(), data.size()));
  if (layout_.compression == COMPRESSION_NONE) {
    rows = std::min(rows, static_cast<std::uint32_t>(data.size() / rowBytes));
  }
  if (data.empty() || rows == 0) return false;
  return TIFFReadFromUserBuffer(tiff_.get(), index, data.data(), static_cast<tmsize_t>(data.size()),
                                to, static_cast<tmsize_t>(rows * rowBytes)) == 1;
}

// A decoder that fails does not report how far it got.
bool TiffBlockReader::givesARow(std::uint32_t index, std::size_t rowBytes) {
  Bytes row(rowBytes);
  return decode(index, row.data(), 1, rowBytes) || decodeCut(index, row.data(), 1, rowBytes);
}

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

/// Fills a raster, which holds paper and has the size of the stored page, with the kept samples of
/// the page's strips, tiles or planes.
class SampleDecoder {
 public:
  SampleDecoder(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                Raster& raster)
      : layout_(layout), codedRows_(codedRows), raster_(raster), reader_(tiff, layout) {
    const std::size_t samples = layout.separatePlanes ? 1 : layout.samplesPerPixel;
    rowBytes_ = (layout.blockWidth * samples * layout.bitsPerSample + 7) / 8;
    // libtiff must agree on the size of a row before it writes into our memory.
    const std::uint64_t theirs = layout.tiled
                                     ? static_cast<std::uint64_t>(TIFFTileRowSize(tiff.get()))
                                     : TIFFScanlineSize64(tiff.get());
    if (theirs != rowBytes_) throw tiff.failure("the size of its rows makes no sense");
  }

  BlockTally decode() {
    forEachBlock(layout_, [this](const Block& block) {
      if (!layout_.isStoredAsKept()) {
        pickSamples(block);
      } else if (layout_.tiled) {
        placeTile(block);
      } else {
        fillRows(block);
      }
    });
    return reader_.tally();
  }

 private:
  // A strip whose rows are those of the raster is decoded into it.
  void fillRows(const Block& block) {
    const std::uint32_t rows =
        codedRows_.empty() ? block.rows : std::min(block.rows, codedRows_.at(block.index));
    if (rows > 0) reader_.read(block.index, raster_.row(block.y), rows, rowBytes_);
  }

  // The rows of a tile are parts of the rows of the raster.
  void placeTile(const Block& block) {
    const std::size_t pixelBits = raster_.bitsPerPixel();
    decodeAside(block);
    for (std::uint32_t y = 0; y < block.rows; ++y) {
      std::memcpy(raster_.row(block.y + y) + block.x * pixelBits / 8,
                  decoded_.data() + y * rowBytes_, (block.columns * pixelBits + 7) / 8);
    }
  }

  // A plane has one sample of each pixel; other pixels have samples that are not kept.
  void pickSamples(const Block& block) {
    const std::size_t step = raster_.samplesPerPixel;
    const SampleCopy samples{layout_.bitsPerSample, block.samples, step,
                             std::min<std::size_t>(block.samples, step)};
    decodeAside(block);
    for (std::uint32_t y = 0; y < block.rows; ++y) {
      samples.copy(decoded_.data() + y * rowBytes_, raster_.row(block.y + y),
                   block.x * step + block.firstSample, block.columns);
    }
  }

  void decodeAside(const Block& block) {
    const std::uint32_t rows = layout_.tiled ? layout_.blockHeight : block.rows;
    decoded_.assign(rows * rowBytes_, paperByte(raster_));
    reader_.read(block.index, decoded_.data(), rows, rowBytes_);
  }

  const TiffLayout& layout_;
  const StripRows& codedRows_;
  Raster& raster_;
  TiffBlockReader reader_;
  std::size_t rowBytes_;
  Bytes decoded_;  ///< a whole block
};

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

/// The state of the RGBA reader for one page. It delivers rows from the top; the page is brought
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

// Decodes the page to `raster`, which is 8-bit RGB, holds paper and has the size of the stored
// page. A strip or tile that cannot be decoded whole stays paper.
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
      // Old-style JPEG is one stream: nothing follows after an error.
      if (!whole && layout.compression == COMPRESSION_OJPEG) return tally;
      if (whole) place(pixels, x, y, columns, rows, raster);
    }
  }
  return tally;
}

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

Decoding decodeRows(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  const std::size_t size = layout.form.rowBytes(layout.width) * layout.height;
  Raster raster{layout.form, layout.width, layout.height, Bytes(size, paperByte(layout.form))};
  const auto [tally, messages] = tiff.listen([&] {
    return layout.throughRgbaReader ? decodeThroughRgba(tiff, layout, raster)
                                    : SampleDecoder(tiff, layout, codedRows, raster).decode();
  });
  clearPadding(raster);

  Examined<Raster> page;
  page.data.damage = messages.damage();
  if (!tally.allWhole && !page.data.damage) page.data.damage = "a strip or tile cannot be decoded";
  const bool foundNothing = page.data.damage && (!tally.anyRow || isBlank(raster));
  page.value = toUpright(std::move(raster), layout.orientation);
  page.data.earlyEnd = earlyEndOf(codedRows, layout.height);
  return {std::move(page), foundNothing};
}

}  // namespace

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

void requireRgbaReader(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.photometric == PHOTOMETRIC_ICCLAB) {
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CIELAB);
  }
  char reason[1024] = "";
  if (TIFFRGBAImageOK(tiff.get(), reason) != 1) throw tiff.failure(reason);
}

}  // namespace orvane
