#include "imaging/page/tiff_strips.h"

#include <utility>

namespace orvane {
namespace {

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

std::optional<std::vector<Bytes>> readStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  std::vector<Bytes> strips;
  for (std::uint32_t strip = 0; strip < layout.blockCount; ++strip) {
    std::optional<Bytes> bytes = readStrip(tiff, strip);
    if (!bytes) return std::nullopt;
    strips.push_back(*std::move(bytes));
  }
  return strips;
}

std::optional<std::vector<Bytes>> readFaxStrips(const TiffHandle& tiff, const TiffLayout& layout) {
  std::optional<std::vector<Bytes>> strips = readStrips(tiff, layout);
  std::uint16_t fillOrder = FILLORDER_MSB2LSB;
  TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &fillOrder);
  if (!strips || fillOrder != FILLORDER_LSB2MSB) return strips;
  for (Bytes& strip : *strips) {
    TIFFReverseBits(strip.data(), static_cast<tmsize_t>(strip.size()));
  }
  return strips;
}

}  // namespace orvane
