#include "imaging/codecs/group4.h"

#include <utility>

#include "foundation/Failure.h"
#include "imaging/codecs/Group4RowWriter.h"
#include "imaging/codecs/Group4Strip.h"
#include "imaging/codecs/encoded_form.h"
#include "imaging/codecs/scan_changes.h"

namespace orvane {

using group4::ChangingElements;
using group4::Group4RowWriter;
using group4::Group4Strip;

std::optional<std::string> findGroup4Damage(const EncodedImage& image) {
  if (auto damage = group4::findLayoutDamage(image)) return damage;
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    if (auto damage = group4::readStrip(image, i).damage) return damage;
  }
  return std::nullopt;
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

// Only the first row of a strip depends on where the strip begins: it was coded against white and
// is coded anew against the last row of the strip before. All other rows keep their bits.
EncodedImage joinGroup4Strips(EncodedImage image) {
  if (image.strips.size() == 1) return image;
  if (auto damage = group4::findLayoutDamage(image)) throw Failure(*damage);
  ChangingElements lastRow(static_cast<std::int32_t>(image.width), 0);
  Group4RowWriter writer;
  for (std::size_t i = 0; i < image.strips.size(); ++i) {
    Group4Strip strip = group4::readStrip(image, i);
    if (strip.damage) throw Failure(*strip.damage);
    writer.writeRow(lastRow, strip.firstRow);
    writer.copyRows(image.strips[i], strip.firstRowEnd, strip.lastRowEnd);
    lastRow = std::move(strip.lastRow);
  }
  image.strips.assign(1, writer.finish());
  image.rowsPerStrip = image.height;
  return image;
}

}  // namespace orvane
