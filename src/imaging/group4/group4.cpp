#include "imaging/group4/group4.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/group4/ChangingElements.h"
#include "imaging/group4/Group4LenientReader.h"
#include "imaging/group4/Group4RowReader.h"
#include "imaging/group4/Group4RowWriter.h"
#include "imaging/raster/EncodedImage.h"

namespace orvane::group4 {
namespace {

/// Wider than any paper at any resolution; a row's changing elements then take 64 MiB at most.
inline constexpr std::uint32_t kMostWidth = 1u << 24;

/// A strip that has been read from end to end.
struct Group4Strip {
  std::optional<std::string> damage;  ///< what follows holds only for a strip without damage
  std::uint32_t rows = 0;     ///< coded; an end of block may come before the strip's last row
  bool isStandard = true;     ///< false: read by the lenient reader, and what follows is not known
  ChangingElements firstRow;  ///< both are white when no row is coded
  ChangingElements lastRow;
  std::size_t firstRowEnd = 0;  ///< in bits from the strip's begin
  std::size_t lastRowEnd = 0;
};

/// Reads strip `index` of an image that `findLayoutDamage` has passed.
Group4Strip readStrip(const EncodedImage& image, std::size_t index);

/// The rows that strip `index` has room for; the last strip of an image may be shorter.
std::uint32_t rowsOfStrip(const EncodedImage& image, std::size_t index);

/// What is wrong with an image before any code is read: not bilevel, no or too many pixels in a
/// row, missing strips.
std::optional<std::string> findLayoutDamage(const EncodedImage& image);

/// What stands after the rows that could be read.
struct RowsEnd {
  std::uint32_t rows;  ///< read whole
  RowFault fault;      ///< of the row after them
  StripEnd end;
};

// The rows may end early in an end of block, never by a cut.
std::optional<std::string> damageAt(const RowsEnd& at, std::uint64_t rowsBefore) {
  const std::uint64_t row = rowsBefore + at.rows;
  if (at.fault == RowFault::None) {
    if (at.end != StripEnd::Data) return std::nullopt;
    return "row " + std::to_string(row) + ": other data than an end of block follows";
  }
  if (at.fault == RowFault::EndOfBlock && at.end == StripEnd::EndOfBlock) return std::nullopt;
  return "row " + std::to_string(row + 1) + ": " + describe(at.fault);
}

RowsEnd readStrictly(ByteView data, std::uint32_t rows, Group4Strip& strip) {
  ChangingElements spare = strip.lastRow;
  Group4RowReader reader(data);
  RowFault fault = reader.readRows(1, strip.lastRow, spare);
  if (fault == RowFault::None) {
    strip.firstRow = strip.lastRow;
    strip.firstRowEnd = reader.position();
    fault = reader.readRows(rows - 1, strip.lastRow, spare);
  }
  // A row with a fault has changed places with the one before it.
  if (fault != RowFault::None) std::swap(strip.lastRow, spare);
  strip.lastRowEnd = reader.position();
  return {reader.rowsRead() - (fault == RowFault::None ? 0 : 1), fault, reader.end()};
}

std::uint32_t rowsOfStrip(const EncodedImage& image, std::size_t index) {
  const std::uint64_t before = std::uint64_t{image.rowsPerStrip} * index;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(image.rowsPerStrip, image.height - before));
}

Group4Strip readStrip(const EncodedImage& image, std::size_t index) {
  const Bytes& data = image.strips[index];
  const auto width = static_cast<std::int32_t>(image.width);
  const std::size_t mostChanges = Group4RowReader::mostChanges(width, data.size());
  const std::uint64_t rowsBefore = std::uint64_t{image.rowsPerStrip} * index;
  const std::uint32_t rows = rowsOfStrip(image, index);
  Group4Strip strip{.damage = std::nullopt,
                    .firstRow = ChangingElements(width, mostChanges),
                    .lastRow = ChangingElements(width, mostChanges)};
  RowsEnd end = readStrictly(data, rows, strip);
  strip.damage = damageAt(end, rowsBefore);
  if (strip.damage) {
    const LenientReading lenient = readLeniently(data, width, rows);
    end = {lenient.rows, lenient.fault, lenient.end};
    strip.damage = damageAt(end, rowsBefore);
    strip.isStandard = false;
  }
  strip.rows = end.rows;
  return strip;
}

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

}  // namespace

}  // namespace orvane::group4

namespace orvane {

using group4::ChangingElements;
using group4::Group4RowWriter;
using group4::Group4Strip;

namespace {

// A blank row as the page shows it: paper, which has the highest value where 0 is black.
ChangingElements paperRow(const EncodedImage& image) {
  ChangingElements row(static_cast<std::int32_t>(image.width), 1);
  if (image.photometric == Photometric::MinIsBlack) {
    row.first()[0] = 0;
    row.finish(1);
  }
  return row;
}

/// Copies the rows of strips that have been read, each strip for itself or one after the other.
class StripCopier {
 public:
  StripCopier(EncodedImage& image, Group4Form form)
      : image_(image),
        joins_(form == Group4Form::OneStream && image.strips.size() > 1),
        paper_(paperRow(image)),
        lastRow_(paper_.width(), 0) {}

  void copy(std::size_t index, Group4Strip strip) {
    const std::uint32_t missing = group4::rowsOfStrip(image_, index) - strip.rows;
    Bytes& data = image_.strips[index];
    if (joins_) {
      join(data, std::move(strip), missing);
    } else if (missing == 0) {
      group4::endStrip(data, strip.lastRowEnd);
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
  // Only the first row of a strip depends on where the strip begins: it was coded against white and
  // is coded again, against the last row of the strip before. All other rows keep their bits.
  void join(ByteView data, Group4Strip strip, std::uint32_t missing) {
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

}  // namespace

Group4Copy copyGroup4(EncodedImage image, Group4Form form) {
  if (auto damage = group4::findLayoutDamage(image)) return damaged(*std::move(damage));
  Group4Copy copy;
  StripCopier copier(image, form);
  bool isStandard = true, hasEnded = false;
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Group4Strip strip = group4::readStrip(image, i);
    if (strip.damage) return damaged(*std::move(strip.damage));
    if (hasEnded && strip.rows > 0) {
      return damaged("rows are missing before strip " + std::to_string(i + 1));
    }
    hasEnded = hasEnded || strip.rows < group4::rowsOfStrip(image, i);
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
  if (raster.width > group4::kMostWidth) throw Failure("page is too wide for Group 4");
  image.compression = Compression::Group4;
  image.rowsPerStrip = raster.height;
  const auto width = static_cast<std::int32_t>(raster.width);
  ChangingElements reference(width, raster.width);
  ChangingElements row(width, raster.width);
  Group4RowWriter writer;
  for (std::uint32_t y = 0; y < raster.height; ++y) {
    group4::scanChanges(raster.row(y), row);
    writer.writeRow(reference, row);
    std::swap(reference, row);
  }
  image.strips.push_back(writer.finish());
  return image;
}

}  // namespace orvane
