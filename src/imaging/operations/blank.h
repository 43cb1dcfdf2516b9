#pragma once

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"

namespace orvane {

/// The share of a page that is ink, 0 to 1: black pixels of a 1-bit page; on every other page the
/// pixels that are darker than its commonest tone, the paper, by more than 24 of 255 in one of
/// their colours. 1 for a page whose commonest tone is not in the bright half. Throws Failure when
/// the page is too large to work on.
double inkShare(const Raster& raster);

/// True for a page that certainly shows nothing: at most 0.02 % of it is ink, and no mark is 1 mm
/// wide or high. Dots with less than 0.5 mm between them are one mark; those that stand alone are
/// the specks of a scanner. A page without a stated resolution counts as 100 dots per inch, and 1
/// mm is never more than 1/300 of the longer side, so that a wrong resolution hides no mark. Throws
/// Failure when the page is too large to work on.
bool isBlank(const Raster& raster, const Resolution& resolution);

}  // namespace orvane
