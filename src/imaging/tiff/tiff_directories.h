#pragma once

#include <cstdint>
#include <optional>
#include <unordered_set>

#include "imaging/tiff/TiffHandle.h"

namespace orvane {

/// The chain of directories of a TIFF file (TIFF 6.0 section 2, and its BigTIFF form), one a page.
/// Walked on its own: libtiff would read every directory whole, and ends a broken chain in silence.
class TiffDirectories {
 public:
  explicit TiffDirectories(const TiffHandle& tiff);

  /// The offset of the next directory, or 0 after the last one. Throws Failure when the chain
  /// leads out of the file or back to an earlier directory.
  std::uint64_t next();

  /// How many values the directory at `offset` says that `tag` has; 0 without that tag.
  std::uint64_t valueCount(std::uint64_t offset, std::uint16_t tag) const;

 private:
  std::optional<std::uint64_t> number(std::uint64_t offset, unsigned bytes) const;
  std::uint64_t valueOf(const std::uint8_t* at, unsigned bytes) const;

  const TiffHandle& tiff_;
  bool bigEndian_;
  unsigned countBytes_;   ///< of the number of entries
  unsigned entryBytes_;   ///< of an entry
  unsigned offsetBytes_;  ///< of an offset and of a value count
  std::uint64_t link_;    ///< where the offset of the next directory stands
  std::unordered_set<std::uint64_t> seen_;
};

}  // namespace orvane
