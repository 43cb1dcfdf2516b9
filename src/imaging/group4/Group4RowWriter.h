#pragma once

#include "imaging/group4/ChangingElements.h"
#include "imaging/raster/bit_streams.h"

namespace orvane::group4 {

/// Writes rows of changing elements as Group 4 codes (ITU-T T.6).
class Group4RowWriter {
 public:
  /// Adds `row`, coded against `reference` (white for the first row of a strip).
  void writeRow(const ChangingElements& reference, const ChangingElements& row);

  /// Adds rows that are coded already: the bits `from` to `to` of `strip`.
  void copyRows(ByteView strip, std::size_t from, std::size_t to);

  /// Adds `count` times the same row, the first time coded against `reference`.
  void repeatRow(const ChangingElements& reference, const ChangingElements& row,
                 std::uint32_t count);

  /// Adds the end of block and hands the strip over.
  Bytes finish();

 private:
  BitWriter bits_;
};

/// Ends a strip whose rows take `bits` bits in one end of block, in place of whatever comes after
/// them.
void endStrip(Bytes& strip, std::size_t bits);

}  // namespace orvane::group4
