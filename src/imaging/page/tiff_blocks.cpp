#include "imaging/page/tiff_blocks.h"

#include <algorithm>

namespace orvane {
namespace {

// What decoders leave behind at an error lacks their last steps: the sum over a row of differences
// (TIFF 6.0 section 14) and the byte order of 16-bit samples.
bool needsLastSteps(TIFF* tiff, const TiffLayout& layout) {
  std::uint16_t predictor = PREDICTOR_NONE;
  const bool mayPredict = layout.compression == COMPRESSION_LZW ||
                          layout.compression == COMPRESSION_ADOBE_DEFLATE ||
                          layout.compression == COMPRESSION_DEFLATE;
  if (mayPredict) TIFFGetFieldDefaulted(tiff, TIFFTAG_PREDICTOR, &predictor);
  return predictor != PREDICTOR_NONE ||
         (layout.bitsPerSample == 16 && TIFFIsByteSwapped(tiff) != 0);
}

}  // namespace

TiffBlockReader::TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout)
    : tiff_(tiff), layout_(layout), partialDataIsReadable_(!needsLastSteps(tiff.get(), layout)) {}

void TiffBlockReader::read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                           std::size_t rowBytes) {
  const auto size = static_cast<tmsize_t>(rows * rowBytes);
  const tmsize_t got = layout_.tiled ? TIFFReadEncodedTile(tiff_.get(), index, to, size)
                                     : TIFFReadEncodedStrip(tiff_.get(), index, to, size);
  if (got == size) return;
  failed_ = true;
  readCutBlock(index, to, rows, rowBytes);
  if (!partialDataIsReadable_) std::fill_n(to, size, paperByte(layout_.form));
}

// libtiff does not touch a block that the end of the file cuts; its beginning is still there.
void TiffBlockReader::readCutBlock(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                                   std::size_t rowBytes) {
  constexpr std::uint64_t kMostBytes = 256U << 20;
  const std::uint64_t fileSize = tiff_.file().size();
  const std::uint64_t offset = TIFFGetStrileOffset(tiff_.get(), index);
  const std::uint64_t count = TIFFGetStrileByteCount(tiff_.get(), index);
  if (offset == 0 || offset >= fileSize || count <= fileSize - offset) return;
  Bytes data(static_cast<std::size_t>(std::min(fileSize - offset, kMostBytes)));
  data.resize(tiff_.file().readAt(offset, data.data(), data.size()));
  if (layout_.compression == COMPRESSION_NONE) {
    rows = std::min(rows, static_cast<std::uint32_t>(data.size() / rowBytes));
  }
  if (data.empty() || rows == 0) return;
  TIFFReadFromUserBuffer(tiff_.get(), index, data.data(), static_cast<tmsize_t>(data.size()), to,
                         static_cast<tmsize_t>(rows * rowBytes));
}

}  // namespace orvane
