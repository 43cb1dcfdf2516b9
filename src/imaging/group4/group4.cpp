#include "imaging/group4/group4.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/group4/ChangingElements.h"
#include "imaging/group4/Group4RowReader.h"
#include "imaging/group4/Group4RowWriter.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/bit_streams.h"

namespace orvane {
namespace {

using namespace group4;

// Wider than any paper at any resolution; the changing elements of a row take at most 64 MiB.
constexpr std::uint32_t kMostWidth = 1u << 24;

// What is wrong with an image before any code is read.
std::optional<std::string> findLayoutDamage(const EncodedImage& image) {
  if (image.compression != Compression::Group4 || image.bitsPerSample != 1 ||
      image.samplesPerPixel != 1) {
    return "not a bilevel Group 4 image";
  }
  if (image.width == 0 || image.height == 0 || image.rowsPerStrip == 0) return "no pixels";
  if (image.width > kMostWidth) return "rows of " + std::to_string(image.width) + " pixels";
  const std::uint64_t strips = (std::uint64_t{image.height} - 1) / image.rowsPerStrip + 1;
  if (image.strips.size() != strips) {
    return std::to_string(image.strips.size()) + " of " + std::to_string(strips) + " strips";
  }
  return std::nullopt;
}

// The rows that strip `index` has room for; the last strip of an image may be shorter.
std::uint32_t rowsOfStrip(const EncodedImage& image, std::size_t index) {
  const std::uint64_t before = std::uint64_t{image.rowsPerStrip} * index;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(image.rowsPerStrip, image.height - before));
}

// A strip that has been read from end to end.
struct Strip {
  std::optional<std::string> damage;  // the other members are valid without damage only
  std::uint32_t rows = 0;             // coded; an end-of-block may come before the strip's last row
  bool isStandard = true;     // false: accepted by readLeniently only; the rest is not known
  ChangingElements firstRow;  // both are white when no row is coded
  ChangingElements lastRow;
  std::size_t firstRowEnd = 0;  // in bits from the beginning of the strip
  std::size_t lastRowEnd = 0;
};

// The rows may end early in an end-of-block, never because the data is cut.
std::optional<std::string> damageAt(const RowsEnd& at, std::uint64_t rowsBefore) {
  const std::uint64_t row = rowsBefore + at.rows;
  if (at.fault == RowFault::None) {
    if (at.end != StripEnd::Data) return std::nullopt;
    return "row " + std::to_string(row) + ": other data than an end of block follows";
  }
  if (at.fault == RowFault::EndOfBlock && at.end == StripEnd::EndOfBlock) return std::nullopt;
  return "row " + std::to_string(row + 1) + ": " + describe(at.fault);
}

RowsEnd readStrictly(ByteView data, std::uint32_t rows, Strip& strip) {
  ChangingElements spare = strip.lastRow;
  Group4RowReader reader(data);
  RowFault fault = reader.readRows(1, strip.lastRow, spare);
  if (fault == RowFault::None) {
    strip.firstRow = strip.lastRow;
    strip.firstRowEnd = reader.position();
    fault = reader.readRows(rows - 1, strip.lastRow, spare);
  }
  if (fault != RowFault::None) std::swap(strip.lastRow, spare);
  strip.lastRowEnd = reader.position();
  return reader.end(fault);
}

// Reads strip `index` of an image whose layout is not damaged.
Strip readStrip(const EncodedImage& image, std::size_t index) {
  const Bytes& data = image.strips[index];
  const auto width = static_cast<std::int32_t>(image.width);
  const std::uint64_t rowsBefore = std::uint64_t{image.rowsPerStrip} * index;
  const std::uint32_t rows = rowsOfStrip(image, index);
  const ChangingElements white(width, Group4RowReader::mostChanges(width, data.size()));
  Strip strip{.damage = std::nullopt, .firstRow = white, .lastRow = white};
  RowsEnd end = readStrictly(data, rows, strip);
  strip.damage = damageAt(end, rowsBefore);
  if (strip.damage) {
    end = readLeniently(data, width, rows);
    strip.damage = damageAt(end, rowsBefore);
    strip.isStandard = false;
  }
  strip.rows = end.rows;
  return strip;
}

// A row that the page shows as paper: black runs, which are 1 bits, where 0 means black.
ChangingElements paperRow(const EncodedImage& image) {
  ChangingElements row(static_cast<std::int32_t>(image.width), 1);
  if (image.photometric == Photometric::MinIsBlack) {
    row.first()[0] = 0;
    row.finish(1);
  }
  return row;
}

// Copies the rows of strips that have been read, each strip separately or all of them joined.
class StripCopier {
 public:
  StripCopier(EncodedImage& image, Group4Output output)
      : image_(image),
        joins_(output == Group4Output::OneStream && image.strips.size() > 1),
        paper_(paperRow(image)),
        lastRow_(paper_.width(), 0) {}

  void copy(std::size_t index, Strip strip) {
    const std::uint32_t missing = rowsOfStrip(image_, index) - strip.rows;
    Bytes& data = image_.strips[index];
    if (joins_) {
      join(data, std::move(strip), missing);
    } else if (missing == 0) {
      endStrip(data, strip.lastRowEnd);
    } else {
      writer_.copyRows(data, 0, strip.lastRowEnd);
      writer_.repeatRow(strip.lastRow, paper_, missing);
      data = writer_.finish();
    }
  }

  void finish() {
    if (joins_) image_.strips.assign(1, writer_.finish());
    if (joins_) image_.rowsPerStrip = image_.height;
  }

 private:
  // Only the first row of a strip depends on the strip's beginning: it is coded against white. It
  // is coded again, against the last row of the strip before. All other rows keep their bits.
  void join(ByteView data, Strip strip, std::uint32_t missing) {
    if (strip.rows > 0) {
      writer_.writeRow(lastRow_, strip.firstRow);
      writer_.copyRows(data, strip.firstRowEnd, strip.lastRowEnd);
      lastRow_ = std::move(strip.lastRow);
    }
    if (missing > 0) {
      writer_.repeatRow(lastRow_, paper_, missing);
      lastRow_ = paper_;
    }
  }

  EncodedImage& image_;
  const bool joins_;
  const ChangingElements paper_;
  ChangingElements lastRow_;
  Group4RowWriter writer_;
};

Group4Copy damaged(std::string reason) {
  Group4Copy copy;
  copy.damage = std::move(reason);
  return copy;
}

constexpr std::int32_t kWordBits = 64;

// Appends the positions of the set bits of `changes`; the highest bit is position `base`.
std::int32_t* appendPositions(std::uint64_t changes, std::int32_t base, std::int32_t* out) {
  while (changes != 0) {
    const int place = std::countl_zero(changes);
    *out++ = base + place;
    changes ^= std::uint64_t{1} << 63 >> place;
  }
  return out;
}

// The last `bits` pixels of a row, padded with zeros.
std::uint64_t loadLastWord(const std::uint8_t* at, std::int32_t bits) {
  std::uint8_t padded[8] = {};
  std::memcpy(padded, at, static_cast<std::size_t>((bits + 7) / 8));
  return loadBigEndian64(padded) >> (kWordBits - bits) << (kWordBits - bits);
}

// Finds the changing elements of a row of 1-bit pixels, of which the first is in the highest bit; 0
// is white. `row` needs room for a change at every pixel.
void scanChanges(const std::uint8_t* pixels, ChangingElements& row) {
  const std::int32_t width = row.width();
  std::int32_t* out = row.first();
  std::uint64_t lastPixel = 0;  // of the word before, in the highest bit
  std::int32_t x = 0;
  for (; width - x >= kWordBits; x += kWordBits, pixels += sizeof(std::uint64_t)) {
    const std::uint64_t word = loadBigEndian64(pixels);
    out = appendPositions(word ^ (word >> 1 | lastPixel), x, out);
    lastPixel = word << 63;
  }
  if (x < width) {
    const std::uint64_t word = loadLastWord(pixels, width - x);
    out = appendPositions(word ^ (word >> 1 | lastPixel), x, out);
    if (out != row.first() && out[-1] == width) --out;
  }
  row.finish(static_cast<std::size_t>(out - row.first()));
}

}  // namespace

Group4Copy copyGroup4(EncodedImage image, Group4Output output) {
  if (auto damage = findLayoutDamage(image)) return damaged(*std::move(damage));
  Group4Copy copy;
  StripCopier copier(image, output);
  bool isStandard = true, hasEnded = false;
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Strip strip = readStrip(image, i);
    if (strip.damage) return damaged(*std::move(strip.damage));
    if (hasEnded && strip.rows > 0) {
      return damaged("rows are missing before strip " + std::to_string(i + 1));
    }
    hasEnded = hasEnded || strip.rows < rowsOfStrip(image, i);
    copy.codedRows.push_back(strip.rows);
    isStandard = isStandard && strip.isStandard;
    if (isStandard) copier.copy(i, std::move(strip));
  }
  if (copy.codedRows[0] == 0) return damaged("no row is coded");
  copier.finish();
  if (isStandard) copy.image = std::move(image);
  return copy;
}

EncodedImage encodeGroup4(const Raster& raster) {
  EncodedImage image = encodedFormOf(raster);
  if (raster.bitsPerSample != 1 || raster.samplesPerPixel != 1 ||
      raster.model == ColourModel::Palette) {
    throw Failure("Group 4 holds bilevel pages only");
  }
  if (raster.width > kMostWidth) throw Failure("page is too wide for Group 4");
  image.compression = Compression::Group4;
  image.rowsPerStrip = raster.height;
  const auto width = static_cast<std::int32_t>(raster.width);
  ChangingElements reference(width, raster.width);
  ChangingElements row(width, raster.width);
  Group4RowWriter writer;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    scanChanges(raster.row(y), row);
    writer.writeRow(reference, row);
    std::swap(reference, row);
  }
  image.strips.push_back(writer.finish());
  return image;
}

}  // namespace orvane
