#include "imaging/page/tiff_decode.h"

#include <cstring>
#include <utility>

#include "imaging/page/orientation.h"
#include "imaging/page/tiff_rgba.h"
#include "imaging/page/tiff_strips.h"

namespace orvane {
namespace {

struct Decoding {
  DecodedPage page;
  bool foundNothing = false;  ///< damaged, and without a row that was decoded
};

// All rows are the same: paper alone, or what a JPEG decoder fills in for missing data.
bool isBlank(const Raster& raster) {
  const std::size_t rowBytes = raster.rowBytes();
  return std::memcmp(raster.pixels.data(), raster.pixels.data() + rowBytes,
                     raster.pixels.size() - rowBytes) == 0;
}

Decoding decodeRows(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  Raster raster = layout.form;
  raster.pixels.assign(raster.rowBytes() * raster.height, paperByte(raster));
  tiff.messages().clear();
  const BlockTally tally = layout.throughRgbaReader
                               ? decodeThroughRgba(tiff, layout, raster)
                               : decodeSamples(tiff, layout, codedRows, raster);
  clearPadding(raster);

  DecodedPage page;
  page.damage = tiff.messages().damage();
  if (!tally.allWhole && !page.damage) page.damage = "a strip or tile cannot be decoded";
  const bool foundNothing = page.damage && (!tally.anyRow || isBlank(raster));
  page.raster = toUpright(std::move(raster), layout.orientation);
  page.earlyEnd = earlyEndOf(codedRows, layout.height);
  return {std::move(page), foundNothing};
}

}  // namespace

// libtiff takes the end of Group 3 rows for a damaged row, so it is asked again for those that come
// before it.
DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  Decoding decoding = decodeRows(tiff, layout, codedRows);
  if (!decoding.page.damage) return std::move(decoding.page);
  if (const auto rows = rowsBeforeReturnToControl(tiff, layout)) {
    Decoding again = decodeRows(tiff, layout, *rows);
    if (!again.page.damage) return std::move(again.page);
  }
  if (decoding.foundNothing) {
    throw tiff.failure("the page cannot be decoded: " + *decoding.page.damage);
  }
  return std::move(decoding.page);
}

}  // namespace orvane
