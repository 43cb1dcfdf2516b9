#pragma once

#include "imaging/group4/ChangingElements.h"
#include "imaging/raster/bit_streams.h"

namespace orvane::group4 {

/// Writes rows of changing elements as Group 4 codes (ITU-T T.6).
class Group4RowWriter {
 public:
  /// Adds `row`, coded against `reference` (white for the first row of a strip).
  void writeRow(const ChangingElements& reference, const ChangingElements& row);

  /// Adds coded rows: the bits `from` to `to` of `strip`.
  void copyRows(ByteView strip, std::size_t from, std::size_t to);

  /// Adds `row` `count` times, the first time coded against `reference`.
  void repeatRow(const ChangingElements& reference, const ChangingElements& row,
                 std::uint32_t count);

  /// Adds an end-of-block and returns the strip.
  Bytes finish();

 private:
  BitWriter bits_;
};

/// Replaces whatever follows the rows of a strip, which take `bits` bits, by one end-of-block.
void endStrip(Bytes& strip, std::size_t bits);

}  // namespace orvane::group4
