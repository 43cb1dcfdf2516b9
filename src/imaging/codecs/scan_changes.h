#pragma once

#include "imaging/codecs/ChangingElements.h"

namespace orvane::group4 {

/// Finds the changing elements of a row of 1-bit pixels, the first one in the highest bit; 0 is
/// white. `row` needs room for a change at every pixel.
void scanChanges(const std::uint8_t* pixels, ChangingElements& row);

}  // namespace orvane::group4
