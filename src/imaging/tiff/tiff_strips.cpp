#include "imaging/tiff/tiff_strips.h"

#include <algorithm>
#include <utility>

namespace orvane {
namespace {

std::optional<Bytes> readStrip(const TiffHandle& tiff, std::uint32_t strip) {
  const std::uint64_t offset = TIFFGetStrileOffset(tiff.get(), strip);
  const std::uint64_t size = TIFFGetStrileByteCount(tiff.get(), strip);
  const std::uint64_t fileSize = tiff.file().size();
  if (size == 0 || offset > fileSize || size > fileSize - offset) return std::nullopt;
  Bytes bytes(static_cast<std::size_t>(size));
  if (tiff.file().readAt(offset, bytes.data(), bytes.size()) != bytes.size()) return std::nullopt;
  return bytes;
}

// The bytes of all strips.
std::optional<std::vector<Bytes>> readStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  std::vector<Bytes> strips;
  for (std::uint32_t strip = 0; strip < layout.blockCount; ++strip) {
    std::optional<Bytes> bytes = readStrip(tiff, strip);
    if (!bytes) return std::nullopt;
    strips.push_back(*std::move(bytes));
  }
  return strips;
}

// The same in fill order 1 (TIFF 6.0 FillOrder).
std::optional<std::vector<Bytes>> readFaxStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  std::optional<std::vector<Bytes>> strips = readStrips(tiff, layout);
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &fillOrder);
  if (!strips || fillOrder != FILLORDER_LSB2MSB) return strips;
  for (Bytes& strip : *strips) {
    TIFFReverseBits(strip.data(), static_cast<tmsize_t>(strip.size()));
  }
  return strips;
}

EncodedImage imageOfStrips(const TiffLayout& layout, Compression compression,
                           std::vector<Bytes> strips) {
  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.bitsPerSample = layout.bitsPerSample;
  image.samplesPerPixel = layout.samplesPerPixel;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = compression;
  image.rowsPerStrip = layout.blockHeight;
  image.strips = std::move(strips);
  return image;
}

constexpr std::size_t kMarkerSize = 2;  // of start-of-image and end-of-image

bool isPlainJpeg(const TiffLayout& layout) {
  const bool gray = layout.photometric == PHOTOMETRIC_MINISBLACK && layout.samplesPerPixel == 1;
  const bool colour = layout.photometric == PHOTOMETRIC_YCBCR && layout.samplesPerPixel == 3;
  return layout.compression == COMPRESSION_JPEG && layout.bitsPerSample == 8 && (gray || colour) &&
         !layout.tiled && !layout.separatePlanes && layout.orientation == ORIENTATION_TOPLEFT;
}

// The tables that the strips share, without the markers around them.
ByteView sharedTables(TIFF* tiff) {
  std::uint32_t size = 0;
  const std::uint8_t* tables = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &size, &tables) == 0 || size < 2 * kMarkerSize) {
    return {};
  }
  return {tables + kMarkerSize, size - 2 * kMarkerSize};
}

// TIFF Technical Note 2: a strip is a JPEG stream whose tables may stand in the directory.
void putTablesIn(Bytes& strip, ByteView tables) {
  if (strip.size() < kMarkerSize) return;
  strip.insert(strip.begin() + kMarkerSize, tables.begin(), tables.end());
}

constexpr unsigned kEndOfLineZeros = 11;  // at least; no row holds as many in a row
constexpr unsigned kReturnToControl = 6;  // end-of-line codes

// Every row begins with an end-of-line code; where rows may be coded two-dimensionally, a tag bit
// follows it.
std::optional<std::uint32_t> rowsBeforeReturnToControl(ByteView strip, bool hasTags) {
  std::uint32_t endOfLines = 0;
  unsigned zeros = 0, inSequence = 0;
  bool tagFollows = false;
  for (std::size_t i = 0; i < strip.size() * 8; ++i) {
    const bool bit = (strip[i / 8] >> (7 - i % 8) & 1) != 0;
    if (std::exchange(tagFollows, false)) continue;
    if (!bit) {
      ++zeros;
      continue;
    }
    if (std::exchange(zeros, 0U) < kEndOfLineZeros) {
      inSequence = 0;
      continue;
    }
    ++endOfLines;
    if (++inSequence == kReturnToControl) return endOfLines - kReturnToControl;
    tagFollows = hasTags;
  }
  return std::nullopt;
}

}  // namespace

std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_CCITTFAX4 || layout.tiled) return std::nullopt;
  std::optional<std::vector<Bytes>> strips = readFaxStrips(tiff, layout);
  if (!strips) return std::nullopt;
  return imageOfStrips(layout, Compression::Group4, *std::move(strips));
}

std::optional<EncodedImage> readJpegStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (!isPlainJpeg(layout)) return std::nullopt;
  std::optional<std::vector<Bytes>> strips = readStrips(tiff, layout);
  if (!strips) return std::nullopt;
  const ByteView tables = sharedTables(tiff.get());
  for (Bytes& strip : *strips) putTablesIn(strip, tables);
  return imageOfStrips(layout, Compression::Jpeg, *std::move(strips));
}

std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_CCITTFAX3 || layout.tiled) return std::nullopt;
  const std::optional<std::vector<Bytes>> strips = readFaxStrips(tiff, layout);
  if (!strips) return std::nullopt;
  std::uint32_t options = 0;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_GROUP3OPTIONS, &options);
  const bool hasTags = (options & GROUP3OPT_2DENCODING) != 0;
  StripRows rows;
  std::uint32_t room = layout.height;
  bool hasEnded = false;
  for (const Bytes& strip : *strips) {
    const std::uint32_t full = std::min(room, layout.blockHeight);
    rows.push_back(std::min(full, rowsBeforeReturnToControl(strip, hasTags).value_or(full)));
    if (hasEnded && rows.back() > 0) return std::nullopt;
    hasEnded = rows.back() < full;
    room -= full;
  }
  if (!hasEnded || rows[0] == 0) return std::nullopt;
  return rows;
}

}  // namespace orvane
