#include "imaging/page/tiff_group4.h"

namespace orvane {
namespace {

bool isPlainGroup4(TIFF* tiff, const TiffLayout& layout) {
  std::uint32_t options = 0;  // may allow uncompressed data between the codes
  TIFFGetFieldDefaulted(tiff, TIFFTAG_GROUP4OPTIONS, &options);
  return layout.compression == COMPRESSION_CCITTFAX4 && options == 0 && !layout.tiled &&
         layout.orientation == ORIENTATION_TOPLEFT && layout.photometric <= PHOTOMETRIC_MINISBLACK;
}

std::optional<Bytes> readStrip(const TiffHandle& tiff, std::uint32_t strip) {
  const std::uint64_t offset = TIFFGetStrileOffset(tiff.get(), strip);
  const std::uint64_t size = TIFFGetStrileByteCount(tiff.get(), strip);
  const std::uint64_t fileSize = tiff.file().size();
  if (size == 0 || offset > fileSize || size > fileSize - offset) return std::nullopt;
  Bytes bytes(static_cast<std::size_t>(size));
  if (tiff.file().readAt(offset, bytes.data(), bytes.size()) != bytes.size()) return std::nullopt;
  return bytes;
}

}  // namespace

std::optional<EncodedImage> readGroup4Strips(const TiffHandle& tiff, const TiffLayout& layout) {
  if (!isPlainGroup4(tiff.get(), layout)) return std::nullopt;
  EncodedImage image;
  image.width = layout.width;
  image.height = layout.height;
  image.photometric = static_cast<Photometric>(layout.photometric);
  image.compression = Compression::Group4;
  image.rowsPerStrip = layout.blockHeight;
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &fillOrder);
  for (std::uint32_t strip = 0; strip < layout.blockCount; ++strip) {
    std::optional<Bytes> bytes = readStrip(tiff, strip);
    if (!bytes) return std::nullopt;
    if (fillOrder == FILLORDER_LSB2MSB) {
      TIFFReverseBits(bytes->data(), static_cast<tmsize_t>(bytes->size()));
    }
    image.strips.push_back(*std::move(bytes));
  }
  return image;
}

}  // namespace orvane
