#pragma once

#include "imaging/codecs/BitWriter.h"
#include "imaging/codecs/ChangingElements.h"

namespace orvane::group4 {

/// Writes rows of changing elements as Group 4 codes (ITU-T T.6).
class Group4RowWriter {
 public:
  /// Adds `row`, coded against `reference` (white for the first row of a strip).
  void writeRow(const ChangingElements& reference, const ChangingElements& row);

  /// Adds rows that are coded already: the bits `from` to `to` of `strip`.
  void copyRows(ByteView strip, std::size_t from, std::size_t to);

  /// Adds the end of block and hands the strip over.
  Bytes finish();

 private:
  BitWriter bits_;
};

}  // namespace orvane::group4
