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
