#include "imaging/tiff/TiffBlockReader.h"

#include <algorithm>
#include <array>

#include "imaging/tiff/compressed_streams.h"
#include "imaging/tiff/tiff_strips.h"

namespace orvane {
namespace {

constexpr char kNotDecoded[] = "a strip or tile cannot be decoded";

// Whether the bytes of a stream are the samples, or their differences along a row (TIFF 6.0
// section 14). PixarLog keeps logarithms, and libtiff knows other predictors.
bool streamHoldsSamples(const TiffLayout& layout) {
  if (!isCompressedStream(layout.compression) || layout.compression == COMPRESSION_PIXARLOG) {
    return false;
  }
  const bool wholeSamples = layout.bitsPerSample == 8 || layout.bitsPerSample == 16;
  return layout.predictor == PREDICTOR_NONE ||
         (layout.predictor == PREDICTOR_HORIZONTAL && wholeSamples);
}

// Makes samples of their differences from the pixel to the left. The sums of a pixel stay in
// registers when the number of its samples is known.
template <typename Sample, std::size_t kSamples>
void addDifferences(Sample* row, std::size_t samples) {
  std::array<Sample, kSamples> sum{};
  for (std::size_t i = 0; i + kSamples <= samples; i += kSamples) {
    for (std::size_t k = 0; k < kSamples; ++k) {
      row[i + k] = sum[k] = static_cast<Sample>(sum[k] + row[i + k]);
    }
  }
}

template <typename Sample>
void addDifferences(std::uint8_t* row, std::size_t rowBytes, std::size_t samplesPerPixel) {
  auto* const samples = reinterpret_cast<Sample*>(row);
  const std::size_t count = rowBytes / sizeof(Sample);
  if (samplesPerPixel == 1) return addDifferences<Sample, 1>(samples, count);
  if (samplesPerPixel == 3) return addDifferences<Sample, 3>(samples, count);
  for (std::size_t i = samplesPerPixel; i < count; ++i) {
    samples[i] = static_cast<Sample>(samples[i] + samples[i - samplesPerPixel]);
  }
}

}  // namespace

TiffBlockReader::TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout)
    : tiff_(tiff), layout_(layout), surplus_(layout.decodedBytes()) {}

std::uint32_t TiffBlockReader::read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                                    std::size_t rowBytes) {
  // libtiff leaves out a run that ends its row; its own readers show zeros there.
  if (layout_.compression == COMPRESSION_THUNDERSCAN) std::fill_n(to, rows * rowBytes, 0);
  std::string damage = kNotDecoded;
  try {
    if (streamHoldsSamples(layout_) && decompressBlock(index, {to, rows * rowBytes}, rowBytes)) {
      finishSamples(to, rows, rowBytes);
      tally_.anyRow = true;
      return rows;
    }
    if (libtiffDecodes(index, to, rows, rowBytes)) {
      noteDecoded(index, true);
      return rows;
    }
  } catch (const Failure& failure) {
    damage = failure.what();
  }
  noteDamage(damage);
  const std::uint32_t salvaged = salvage(index, to, rows, rowBytes);
  tally_.anyRow = tally_.anyRow || salvaged > 0;
  return salvaged;
}

bool TiffBlockReader::noteDecoded(std::uint32_t index, bool decoded) {
  if (!decoded) noteDamage(kNotDecoded);
  tally_.anyRow = tally_.anyRow || decoded;
  if (!decoded || !isCompressedStream(layout_.compression)) return decoded;
  try {
    const std::uint32_t y = index % layout_.areaCount() * layout_.blockHeight;  // of a strip
    Bytes data(streamBytes(layout_.tiled ? layout_.blockHeight
                                         : std::min(layout_.blockHeight, layout_.height - y)));
    decompressBlock(index, data, streamBytes(1));
    return true;
  } catch (const Failure& failure) {
    noteDamage(failure.what());
    return false;
  }
}

void TiffBlockReader::noteDamage(const std::string& reason) {
  if (!tally_.damage) tally_.damage = reason;
  surplus_ = 0;  // a stream that goes on for too long is not followed again for every block
}

// False for a stream that only libtiff reads.
bool TiffBlockReader::decompressBlock(std::uint32_t index, std::span<std::uint8_t> to,
                                      std::size_t rowBytes) {
  Bytes buffer;
  const ByteView stream = storedBlockInFillOrder1(tiff_, index, buffer);
  if (isOldStyleLzw(layout_.compression, stream)) return false;
  decompress(layout_.compression, stream, to, rowBytes, surplus_);
  return true;
}

// The bytes that rows of a block take in its stream.
std::uint64_t TiffBlockReader::streamBytes(std::uint32_t rows) const {
  const std::uint64_t bytes =
      layout_.tiled ? TIFFVTileSize64(tiff_.get(), rows) : TIFFVStripSize64(tiff_.get(), rows);
  const bool isPixarLog = layout_.compression == COMPRESSION_PIXARLOG;
  return isPixarLog ? bytes * 8 / layout_.bitsPerSample * sizeof(std::uint16_t) : bytes;
}

// From the samples of the file to those of the machine.
void TiffBlockReader::finishSamples(std::uint8_t* to, std::uint32_t rows,
                                    std::size_t rowBytes) const {
  if (layout_.bitsPerSample == 16 && TIFFIsByteSwapped(tiff_.get()) != 0) {
    TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(to),
                         static_cast<tmsize_t>(rows * rowBytes / 2));
  }
  if (layout_.predictor == PREDICTOR_NONE) return;
  const std::size_t step = layout_.separatePlanes ? 1 : layout_.samplesPerPixel;
  const auto add =
      layout_.bitsPerSample == 16 ? addDifferences<std::uint16_t> : addDifferences<std::uint8_t>;
  for (std::uint32_t y = 0; y < rows; ++y) add(to + y * rowBytes, rowBytes, step);
}

bool TiffBlockReader::libtiffDecodes(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                                     std::size_t rowBytes) {
  const auto size = static_cast<tmsize_t>(rows * rowBytes);
  return size == (layout_.tiled ? TIFFReadEncodedTile(tiff_.get(), index, to, size)
                                : TIFFReadEncodedStrip(tiff_.get(), index, to, size));
}

// libtiff does not tell how far a decoder came, and what it leaves after that differs from version
// to version. So the greatest number of rows that it can decode is searched for. It does not touch
// a block that the end of the file cuts; the beginning of that is given to it.
std::uint32_t TiffBlockReader::salvage(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                                       std::size_t rowBytes) {
  Bytes data;
  const ByteView stored = storedBlock(tiff_, index, data);
  const bool isCut = stored.size() < TIFFGetStrileByteCount(tiff_.get(), index);
  if (stored.empty()) return 0;
  if (isCut && data.empty()) data.assign(stored.begin(), stored.end());
  const auto decodes = [&](std::uint32_t count) {
    if (!isCut) return libtiffDecodes(index, to, count, rowBytes);
    if (layout_.compression == COMPRESSION_NONE && data.size() < count * rowBytes) return false;
    return TIFFReadFromUserBuffer(tiff_.get(), index, data.data(),
                                  static_cast<tmsize_t>(data.size()), to,
                                  static_cast<tmsize_t>(count * rowBytes)) == 1;
  };
  std::uint32_t good = 0;
  for (std::uint32_t bad = rows + 1; bad - good > 1;) {
    const std::uint32_t middle = good + (bad - good) / 2;
    (decodes(middle) ? good : bad) = middle;
  }
  // A fax decoder leaves out rows without saying so, and an attempt may have left anything there.
  std::fill_n(to, rows * rowBytes, paperByte(layout_.form));
  return good > 0 && decodes(good) ? good : 0;
}

}  // namespace orvane
