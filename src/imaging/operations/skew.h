#pragma once

#include <cstdint>
#include <vector>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// Where a page, made smaller, has ink: text, rules and frames. Photographs, filled areas, a dark
/// scanner bed around the page and everything else that reaches its border are not ink.
struct InkMap {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> ink;  ///< row after row, 1 for ink and 0 for none
};

/// The ink of a page of any form, in the proportions of the paper, its longer side brought to 1,800
/// pixels or less. Throws Failure when the page is too large to work on.
InkMap findInk(const Raster& raster, const Resolution& resolution);

}  // namespace orvane
