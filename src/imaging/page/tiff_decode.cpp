#include "imaging/page/tiff_decode.h"

#include <utility>

#include "imaging/page/orientation.h"

namespace orvane {

DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout) {
  Raster raster = layout.form;
  raster.pixels.assign(raster.rowBytes() * raster.height, paperByte(raster));
  tiff.messages().clear();
  const bool whole = layout.throughRgbaReader ? decodeThroughRgba(tiff, layout, raster)
                                              : decodeSamples(tiff, layout, raster);
  clearPadding(raster);

  DecodedPage page;
  page.damage = tiff.messages().damage();
  if (!whole && !page.damage) page.damage = "a strip or tile cannot be decoded";
  page.raster = toUpright(std::move(raster), layout.orientation);
  return page;
}

}  // namespace orvane
