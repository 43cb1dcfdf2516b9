#pragma once

#include <cstdint>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// How many rows of a page are as long as one of its columns is wide; 1 for square pixels. No
/// scanner goes beyond 4; a ratio beyond 16 counts as 16.
double rowsPerColumn(const Resolution& resolution);

/// Turns a page about its centre by any angle (in degrees, to the left when positive) onto a sheet
/// of `width` x `height` pixels that has the same centre. Pixels are interpolated; a 1-bit page is
/// cut at half coverage and stays 1-bit. What was outside of the page is paper. The page is in
/// working form (see working_form.h), `rowsPerColumn` tells its proportions and those of the sheet.
/// Throws Failure when the sheet is too large.
Raster turnOnSheet(const Raster& page, double degrees, double rowsPerColumn, std::uint32_t width,
                   std::uint32_t height);

}  // namespace orvane
