#include "imaging/codecs/Group4Strip.h"

#include <algorithm>
#include <utility>

#include "imaging/codecs/Group4LenientReader.h"
#include "imaging/codecs/Group4RowReader.h"

namespace orvane::group4 {
namespace {

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

}  // namespace

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

}  // namespace orvane::group4
