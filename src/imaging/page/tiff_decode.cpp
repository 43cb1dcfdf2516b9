#include "imaging/page/tiff_decode.h"

#include <utility>

#include "imaging/page/orientation.h"
#include "imaging/page/tiff_strips.h"

namespace orvane {

namespace {

DecodedPage decodeRows(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  Raster raster = layout.form;
  raster.pixels.assign(raster.rowBytes() * raster.height, paperByte(raster));
  tiff.messages().clear();
  const bool whole = layout.throughRgbaReader ? decodeThroughRgba(tiff, layout, raster)
                                              : decodeSamples(tiff, layout, codedRows, raster);
  clearPadding(raster);

  DecodedPage page;
  page.damage = tiff.messages().damage();
  if (!whole && !page.damage) page.damage = "a strip or tile cannot be decoded";
  page.raster = toUpright(std::move(raster), layout.orientation);
  page.earlyEnd = earlyEndOf(codedRows, layout.height);
  return page;
}

}  // namespace

// libtiff takes the end of Group 3 rows for a damaged row, so it is asked again for those that come
// before it.
DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows) {
  DecodedPage page = decodeRows(tiff, layout, codedRows);
  if (!page.damage) return page;
  if (const auto rows = rowsBeforeReturnToControl(tiff, layout)) {
    DecodedPage again = decodeRows(tiff, layout, *rows);
    if (!again.damage) return again;
  }
  return page;
}

}  // namespace orvane
