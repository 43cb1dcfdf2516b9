#include "imaging/tiff/tiff_directories.h"

#include <algorithm>

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
  constexpr std::uint64_t kMostEntries = 4096;  // libtiff reads no more
  const std::uint64_t entries = std::min(number(offset, countBytes_).value_or(0), kMostEntries);
  Bytes bytes(entries * entryBytes_);
  bytes.resize(tiff_.file().readAt(offset + countBytes_, bytes.data(), bytes.size()));
  for (std::size_t at = 0; at + entryBytes_ <= bytes.size(); at += entryBytes_) {
    if (valueOf(&bytes[at], 2) == tag) return valueOf(&bytes[at + 4], offsetBytes_);
  }
  return 0;
}

std::optional<std::uint64_t> TiffDirectories::number(std::uint64_t offset, unsigned bytes) const {
  std::uint8_t buffer[8];
  if (offset > tiff_.file().size() || tiff_.file().readAt(offset, buffer, bytes) != bytes) {
    return std::nullopt;
  }
  return valueOf(buffer, bytes);
}

std::uint64_t TiffDirectories::valueOf(const std::uint8_t* at, unsigned bytes) const {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < bytes; ++i) value = value << 8 | at[bigEndian_ ? i : bytes - 1 - i];
  return value;
}

}  // namespace orvane
