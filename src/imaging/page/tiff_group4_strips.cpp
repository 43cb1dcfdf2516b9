#include <utility>

#include "imaging/page/tiff_strips.h"

namespace orvane {
namespace {

bool isPlainGroup4(TIFF* tiff, const TiffLayout& layout) {
  std::uint32_t options = 0;  // may allow uncompressed data between the codes
  TIFFGetFieldDefaulted(tiff, TIFFTAG_GROUP4OPTIONS, &options);
  return layout.compression == COMPRESSION_CCITTFAX4 && options == 0 && !layout.tiled &&
         layout.orientation == ORIENTATION_TOPLEFT && layout.photometric <= PHOTOMETRIC_MINISBLACK;
}

}  // namespace

std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (!isPlainGroup4(tiff.get(), layout)) return std::nullopt;
  std::optional<std::vector<Bytes>> strips = readStrips(tiff, layout);
  if (!strips) return std::nullopt;

  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = Compression::Group4;
  image.rowsPerStrip = layout.blockHeight;
  image.strips = *std::move(strips);
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &fillOrder);
  if (fillOrder == FILLORDER_LSB2MSB) {
    for (Bytes& strip : image.strips) {
      TIFFReverseBits(strip.data(), static_cast<tmsize_t>(strip.size()));
    }
  }
  return image;
}

}  // namespace orvane
