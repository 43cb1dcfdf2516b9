#include "imaging/tiff/tiff_strips.h"

#include <algorithm>
#include <utility>

namespace orvane {
namespace {

bool isWhole(const TiffHandle& tiff, std::uint32_t index, ByteView stored) {
  return !stored.empty() && stored.size() == TIFFGetStrileByteCount(tiff.get(), index);
}

}  // namespace

std::uint16_t fillOrderOf(const TiffHandle& tiff) {
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &fillOrder);
  return fillOrder;
}

ByteView storedBlock(const TiffHandle& tiff, std::uint32_t index, Bytes& buffer) {
  const std::uint64_t fileSize = tiff.file().size();
  const std::uint64_t offset = std::min(fileSize, TIFFGetStrileOffset(tiff.get(), index));
  const std::uint64_t count =
      std::min(fileSize - offset, TIFFGetStrileByteCount(tiff.get(), index));
  const ByteView content = tiff.file().wholeContent();
  if (!content.empty()) return content.subspan(offset, count);
  buffer.resize(count);
  buffer.resize(tiff.file().readAt(offset, buffer));
  return buffer;
}

ByteView storedBlockInFillOrder1(const TiffHandle& tiff, std::uint32_t index, Bytes& buffer) {
  const ByteView stored = storedBlock(tiff, index, buffer);
  if (fillOrderOf(tiff) != FILLORDER_LSB2MSB) return stored;
  if (stored.data() != buffer.data()) buffer.assign(stored.begin(), stored.end());
  TIFFReverseBits(buffer.data(), static_cast<tmsize_t>(buffer.size()));
  return buffer;
}

// The image owns its strips, which become those of a copy. A strip that claims to be longer than
// codes for its rows can be is taken up to that length.
std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (!layout.isGroup4InStrips()) return std::nullopt;
  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = Compression::Group4;
  image.rowsPerStrip = layout.blockHeight;
  for (std::uint32_t strip = 0; strip < layout.blockCount; ++strip) {
    Bytes bytes;
    const ByteView stored = storedBlockInFillOrder1(tiff, strip, bytes);
    if (!isWhole(tiff, strip, stored)) return std::nullopt;
    const std::size_t most = std::min<std::uint64_t>(stored.size(), layout.mostGroup4Bytes());
    if (stored.data() == bytes.data()) {
      bytes.resize(most);
    } else {
      bytes.assign(stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(most));
    }
    image.strips.push_back(std::move(bytes));
  }
  return image;
}

std::optional<StoredJpeg> storedJpeg(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_JPEG || layout.bitsPerSample != 8) return std::nullopt;
  StoredJpeg page;
  page.width = layout.width;
  page.height = layout.height;
  page.rowsPerStrip = layout.blockHeight;
  page.samplesPerPixel = layout.samplesPerPixel;
  page.photometric = static_cast<Photometric>(layout.photometric);
  page.isUprightInStrips =
      !layout.tiled && !layout.separatePlanes && layout.orientation == ORIENTATION_TOPLEFT;
  std::uint32_t size = 0;
  const std::uint8_t* tables = nullptr;
  if (TIFFGetField(tiff.get(), TIFFTAG_JPEGTABLES, &size, &tables) == 1) {
    page.tables = {tables, size};
  }
  page.streamCount = layout.blockCount;
  page.stream = [&tiff, buffer = Bytes()](std::uint32_t index) mutable -> ByteView {
    const ByteView stored = storedBlock(tiff, index, buffer);
    return isWhole(tiff, index, stored) ? stored : ByteView();
  };
  return page;
}

namespace {

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

std::optional<StripRows> rowsBeforeReturnToControl(const TiffHandle& tiff,
                                                   const TiffLayout& layout) {
  const bool isGroup3 = layout.compression == COMPRESSION_CCITTFAX3;
  if (!isGroup3 || layout.tiled || layout.blocksOverlap) return std::nullopt;
  std::uint32_t options = 0;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_GROUP3OPTIONS, &options);
  const bool hasTags = (options & GROUP3OPT_2DENCODING) != 0;
  StripRows rows;
  Bytes buffer;
  std::uint32_t room = layout.height;
  bool hasEnded = false;
  for (std::uint32_t index = 0; index < layout.blockCount; ++index) {
    const ByteView strip = storedBlockInFillOrder1(tiff, index, buffer);
    if (!isWhole(tiff, index, strip)) return std::nullopt;
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
