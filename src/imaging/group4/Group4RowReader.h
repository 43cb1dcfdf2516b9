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
  EndOfBlock,     ///< an end-of-block, or at least its beginning, in place of the row
  DataEnds,       ///< the data ends within the row
  TooLong,        ///< a run passes the end of the row
  Backwards,      ///< a changing element that is not to the right of the one before it
};

/// The fault in words, to follow "row 12: ".
std::string describe(RowFault fault);

/// What comes after the rows of a strip.
enum class StripEnd {
  EndOfBlock,  ///< whatever follows it is padding
  Padding,     ///< nothing, or zero bits, with or without end-of-line codes between them
  Data,        ///< anything else
};

/// Where the rows of a strip end.
struct RowsEnd {
  std::uint32_t rows = 0;            ///< read completely
  RowFault fault = RowFault::None;   ///< of the row after them
  StripEnd end = StripEnd::Padding;  ///< what comes after the rows, or in place of the faulty one
};

/// Reads the rows of one Group 4 strip as changing elements (ITU-T T.6). Strict: what a T.6 encoder
/// does not write is a fault.
class Group4RowReader {
 public:
  explicit Group4RowReader(ByteView strip) : bits_(strip) {}

  /// Reads the next `count` rows. `last` is the row before them (white for the first row of a
  /// strip) and becomes the last of them. `spare` is scratch space. Both have the same width and
  /// room for `mostChanges`. After a fault nothing more can be read: `last` is then undefined and
  /// `spare` the row before the faulty one.
  RowFault readRows(std::uint32_t count, ChangingElements& last, ChangingElements& spare);

  /// Where the rows read so far end; `fault` is the result of the last `readRows`.
  RowsEnd end(RowFault fault) const;

  /// Bits read so far.
  std::size_t position() const { return bits_.position(); }

  /// The most changes that a row of `width` can have in a strip of `stripBytes`: each takes a bit.
  static std::size_t mostChanges(std::int32_t width, std::size_t stripBytes);

 private:
  BitReader bits_;
  std::uint32_t rowsRead_ = 0;  // with the faulty one
};

/// Reads up to `rows` rows of a strip and accepts every code that libtiff accepts without a
/// warning, also where ITU-T T.6 does not allow it: runs of length 0 between others, two changing
/// elements at one position, a row that ends in a pass code, a last code without its trailing
/// zeros. Encoders in use write some of these, and readers interpret them differently; so a strip
/// that only this function accepts has to be decoded by libtiff.
RowsEnd readLeniently(ByteView strip, std::int32_t width, std::uint32_t rows);

}  // namespace orvane::group4
