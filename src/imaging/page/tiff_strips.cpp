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

}  // namespace orvane
