#pragma once

#include <cstdint>

#include "imaging/page/Raster.h"

namespace orvane {

/// Turns a page about its centre by any angle (in degrees, to the left when positive) onto a sheet
/// of `width` x `height` pixels that has the same centre. Pixels are interpolated; a 1-bit page is
/// cut at half coverage and stays 1-bit. What was outside of the page is paper. The page is in
/// working form (see working_form.h); throws Failure when the sheet is too large.
Raster turnOnSheet(const Raster& page, double degrees, std::uint32_t width, std::uint32_t height);

}  // namespace orvane
