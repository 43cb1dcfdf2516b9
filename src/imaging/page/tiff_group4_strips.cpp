#include <utility>

#include "imaging/page/tiff_strips.h"

namespace orvane {

std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (layout.compression != COMPRESSION_CCITTFAX4 || layout.tiled) return std::nullopt;
  std::optional<std::vector<Bytes>> strips = readFaxStrips(tiff, layout);
  if (!strips) return std::nullopt;

  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = Compression::Group4;
  image.rowsPerStrip = layout.blockHeight;
  image.strips = *std::move(strips);
  return image;
}

}  // namespace orvane
