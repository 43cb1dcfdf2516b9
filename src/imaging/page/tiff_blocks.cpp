#include "imaging/page/tiff_blocks.h"

#include <algorithm>

namespace orvane {
namespace {

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

// What decoders leave behind at an error lacks their last steps: the sum over a row of differences
// (TIFF 6.0 section 14) and the byte order of 16-bit samples. Others leave zeros, or anything.
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

}  // namespace

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

// A decoder that fails does not tell how far it came.
bool TiffBlockReader::givesARow(std::uint32_t index, std::size_t rowBytes) {
  Bytes row(rowBytes);
  return decode(index, row.data(), 1, rowBytes) || decodeCut(index, row.data(), 1, rowBytes);
}

}  // namespace orvane
