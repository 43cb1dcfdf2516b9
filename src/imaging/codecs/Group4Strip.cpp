#include "imaging/codecs/Group4Strip.h"

#include <algorithm>

#include "imaging/codecs/Group4RowReader.h"

namespace orvane::group4 {
namespace {

std::string atRow(std::uint64_t row, const std::string& what) {
  return "row " + std::to_string(row) + ": " + what;
}

std::uint32_t rowsOfStrip(const EncodedImage& image, std::size_t index) {
  const std::uint64_t before = std::uint64_t{image.rowsPerStrip} * index;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(image.rowsPerStrip, image.height - before));
}

}  // namespace

Group4Strip readStrip(const EncodedImage& image, std::size_t index) {
  const Bytes& data = image.strips[index];
  const auto width = static_cast<std::int32_t>(image.width);
  const std::size_t mostChanges = Group4RowReader::mostChanges(width, data.size());
  Group4Strip strip{std::nullopt, ChangingElements(width, mostChanges),
                    ChangingElements(width, mostChanges)};
  ChangingElements spare(width, mostChanges);
  Group4RowReader reader(data);
  const std::uint64_t rowsBefore = std::uint64_t{image.rowsPerStrip} * index;
  const std::uint32_t rows = rowsOfStrip(image, index);
  RowFault fault = reader.readRows(1, strip.lastRow, spare);
  strip.firstRow = strip.lastRow;
  strip.firstRowEnd = reader.position();
  if (fault == RowFault::None) fault = reader.readRows(rows - 1, strip.lastRow, spare);
  if (fault != RowFault::None) {
    strip.damage = atRow(rowsBefore + reader.rowsRead(), describe(fault));
    return strip;
  }
  strip.lastRowEnd = reader.position();
  if (!reader.endsCleanly()) {
    strip.damage = atRow(rowsBefore + rows, "other data than an end of block follows");
  }
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
