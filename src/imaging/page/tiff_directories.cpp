#include "imaging/page/tiff_directories.h"

namespace orvane {

TiffDirectories::TiffDirectories(const TiffHandle& tiff)
    : tiff_(tiff), bigEndian_(TIFFIsBigEndian(tiff.get()) != 0) {
  const bool bigTiff = TIFFIsBigTIFF(tiff.get()) != 0;
  countBytes_ = bigTiff ? 8 : 2;
  entryBytes_ = bigTiff ? 20 : 12;
  offsetBytes_ = bigTiff ? 8 : 4;
  link_ = bigTiff ? 8 : 4;
}

std::uint64_t TiffDirectories::next() {
  const std::optional<std::uint64_t> offset = number(link_, offsetBytes_);
  if (!offset) throw tiff_.failure("the file ends within its list of pages");
  if (*offset == 0) return 0;
  if (!seen_.insert(*offset).second) throw tiff_.failure("its list of pages runs in a circle");
  const std::optional<std::uint64_t> entries = number(*offset, countBytes_);
  if (!entries || *entries == 0 || *entries > tiff_.file().size() / entryBytes_) {
    throw tiff_.failure("its list of pages is damaged");
  }
  link_ = *offset + countBytes_ + *entries * entryBytes_;
  return *offset;
}

std::uint64_t TiffDirectories::valueCount(std::uint64_t offset, std::uint16_t tag) const {
  const std::uint64_t entries = number(offset, countBytes_).value_or(0);
  for (std::uint64_t i = 0; i < entries; ++i) {
    const std::uint64_t entry = offset + countBytes_ + i * entryBytes_;
    const std::optional<std::uint64_t> entryTag = number(entry, 2);
    if (!entryTag) return 0;
    if (*entryTag == tag) return number(entry + 4, offsetBytes_).value_or(0);
  }
  return 0;
}

std::optional<std::uint64_t> TiffDirectories::number(std::uint64_t offset, unsigned bytes) const {
  std::uint8_t buffer[8];
  if (offset > tiff_.file().size() || tiff_.file().readAt(offset, buffer, bytes) != bytes) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (unsigned i = 0; i < bytes; ++i) {
    value = value << 8 | buffer[bigEndian_ ? i : bytes - 1 - i];
  }
  return value;
}

}  // namespace orvane
