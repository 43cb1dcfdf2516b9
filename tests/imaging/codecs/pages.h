#pragma once

#include <filesystem>
#include <vector>

#include "imaging/Random.h"
#include "imaging/page/Raster.h"

namespace orvane::test {

Raster form(ColourModel model, std::uint16_t bits, std::uint16_t samples = 1,
            ExtraSample extra = ExtraSample::None);

/// A page like a scan, in the bytes of any form: paper with a soft shade, text-like strokes, a
/// picture and noise.
Raster scannedPage(Random& random, const Raster& form, std::uint32_t width, std::uint32_t height);

/// A 1-bit page whose rows are runs of up to `longestRun` pixels, some of them like the row above.
Raster bilevelPage(Random& random, std::uint32_t longestRun, std::uint32_t width,
                   std::uint32_t height);

/// Writes 8-bit gray or RGB pixels as PGM or PPM, for tools that read nothing else.
void writePnm(const std::filesystem::path& file, const Raster& raster);

}  // namespace orvane::test
