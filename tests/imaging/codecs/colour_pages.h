#pragma once

#include <filesystem>

#include "imaging/codecs/Random.h"
#include "imaging/page/Raster.h"

namespace orvane::test {

/// A page like a scan: paper with a soft shade, text-like strokes, a picture and sensor noise in
/// every sample. Works for every form but 1 bit.
Raster scannedPage(Random& random, const Raster& form, std::uint32_t width, std::uint32_t height);

/// The forms of pages that the codecs are given: gray, RGB and so on, with and without an extra
/// sample, of every depth.
std::vector<Raster> allForms();

/// Writes 8-bit gray or RGB pixels as PGM or PPM, for tools that read nothing else.
void writePnm(const std::filesystem::path& file, const Raster& raster);

}  // namespace orvane::test
