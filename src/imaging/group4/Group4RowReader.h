#pragma once

#include <cstdint>
#include <string>

#include "imaging/group4/ChangingElements.h"
#include "imaging/raster/bit_streams.h"

namespace orvane::group4 {

/// What can be wrong with a row.
enum class RowFault {
  None,
  BadCode,
  ExtensionCode,  ///< the uncompressed mode, which is not in use
  EndOfBlock,     ///< an end of block, or at least its beginning, in place of the row
  DataEnds,       ///< the data ends within the row
  TooLong,        ///< a run passes the row's end
  Backwards,      ///< a changing element that does not lie behind the one before it
};

/// The fault in words, to follow "row 12: ".
std::string describe(RowFault fault);

/// What comes after the rows of a strip.
enum class StripEnd {
  EndOfBlock,  ///< whatever comes after that is padding
  Padding,     ///< nothing, or zero bits, with or without end-of-line codes between them
  Data,        ///< anything else
};

/// Looks at what is left of a strip. Zero bits before the end of block belong to it.
StripEnd readStripEnd(BitReader bits);

/// What is wrong where no mode code, or no run code, begins. `rowBegins` is true as long as the row
/// has no code yet.
RowFault faultOfMode(BitReader bits, bool rowBegins);
RowFault faultOfRun(BitReader bits);

/// Reads the rows of one Group 4 strip as changing elements (ITU-T T.6). Strict: what a T.6 encoder
/// does not write is a fault.
class Group4RowReader {
 public:
  explicit Group4RowReader(ByteView strip) : bits_(strip) {}

  /// Reads the next `count` rows, coded against `last`, the row before them (white for the first
  /// row of a strip); then `last` is the last of them. `spare` holds a row meanwhile. Both have the
  /// same width and room for `mostChanges`. After a fault nothing can be read.
  RowFault readRows(std::uint32_t count, ChangingElements& last, ChangingElements& spare);

  /// Rows read so far, the one with a fault included.
  std::uint32_t rowsRead() const { return rowsRead_; }

  /// What comes after the rows read so far; after a fault, what stands in place of the row.
  StripEnd end() const { return readStripEnd(bits_); }

  /// Bits read so far.
  std::size_t position() const { return bits_.position(); }

  /// The most changes that a row of `width` can have in a strip of `stripBytes`: each takes a bit.
  static std::size_t mostChanges(std::int32_t width, std::size_t stripBytes);

 private:
  BitReader bits_;
  std::uint32_t rowsRead_ = 0;
};

}  // namespace orvane::group4
