#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "imaging/page/Raster.h"

/// Pixels as 16-bit channels, red, green, blue (cyan, magenta, yellow, black) and alpha, for the
/// comparison of our decoding with that of an outside tool.
namespace orvane::test {

using Pixels16 = std::vector<std::uint16_t>;

/// A raster, each sample spread to 16 bits.
Pixels16 pixelsOf(const Raster& raster);

/// What ImageMagick makes of a file, with `options` before its output; upright. `channels` is its
/// name for them: rgb, rgba, cmyk.
Pixels16 judgedPixels(const std::filesystem::path& file, const std::string& channels,
                      const std::string& options = {});

/// The largest difference of two pixels' channels; a number past all when the sizes differ.
int largestDifference(const Pixels16& left, const Pixels16& right);

}  // namespace orvane::test
