#pragma once

#include <array>
#include <cstdint>

#include "imaging/page/Raster.h"

namespace orvane {

/// Spreads rows of a raster to one byte a sample: shallow gray and colour samples to 0..255, 16-bit
/// samples by their high byte, palette indices as they are.
class RowToBytes {
 public:
  explicit RowToBytes(const Raster& form);

  /// Spreads one row; `bytes` takes width x samplesPerPixel values.
  void spread(const std::uint8_t* row, std::uint8_t* bytes) const;

 private:
  using Spread = std::array<std::uint8_t, 8>;

  void spreadShallow(const std::uint8_t* row, std::uint8_t* bytes) const;

  std::size_t samples_;  ///< in a row
  unsigned bits_;
  std::array<Spread, 256> spreads_{};  ///< the shallow samples of each byte
};

}  // namespace orvane
