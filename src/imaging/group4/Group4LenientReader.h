#pragma once

#include <cstdint>

#include "imaging/group4/Group4RowReader.h"

namespace orvane::group4 {

/// What a lenient walk over a strip has found.
struct LenientReading {
  std::uint32_t rows = 0;            ///< read whole
  RowFault fault = RowFault::None;   ///< of the row after them, when there are fewer than asked for
  StripEnd end = StripEnd::Padding;  ///< what comes after them
};

/// Reads up to `rows` rows of a strip and takes every code that libtiff takes without a word, also
/// where ITU-T T.6 has no such code: runs of no pixels between others, changing elements in one
/// place, a row that ends in a pass code, a last code whose zeros are cut off. Encoders in use
/// write some of them, and readers differ in what they make of them; so a strip that only this
/// reader accepts has to be decoded by libtiff.
LenientReading readLeniently(ByteView strip, std::int32_t width, std::uint32_t rows);

}  // namespace orvane::group4
