#pragma once

#include <cstdint>

#include "imaging/page/Raster.h"
#include "imaging/page/TiffHandle.h"

namespace orvane {

/// How the image of a directory is stored, with the defaults of TIFF 6.0 for what is missing.
struct TiffLayout {
  std::uint32_t width = 0;  ///< as stored, before the orientation
  std::uint32_t height = 0;
  std::uint16_t bitsPerSample = 1;
  std::uint16_t samplesPerPixel = 1;  ///< in the file
  std::uint16_t compression = COMPRESSION_NONE;
  std::uint16_t photometric = PHOTOMETRIC_MINISWHITE;
  std::uint16_t orientation = ORIENTATION_TOPLEFT;
  bool separatePlanes = false;
  bool tiled = false;
  std::uint32_t blockWidth = 0;   ///< of a strip or tile
  std::uint32_t blockHeight = 0;  ///< of a strip or tile; the last strip may be shorter
  std::uint32_t blockCount = 0;   ///< of strips or tiles, in all planes

  bool throughRgbaReader = false;  ///< see tiff_rgba.h
  /// What the page becomes: depth, model and palette; the size is that of the page as stored.
  Raster form;

  bool isFax() const {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
  }
  bool turnsSideways() const { return orientation >= ORIENTATION_LEFTTOP; }
  /// False when samples have to be picked out of what libtiff decodes.
  bool samplesLieAsKept() const {
    return samplesPerPixel == form.samplesPerPixel && (!separatePlanes || samplesPerPixel == 1);
  }
};

/// Reads the layout of the current directory and sets libtiff to decode it. Throws Failure for an
/// image that cannot be decoded here or would need more than 1 GiB.
TiffLayout readTiffLayout(const TiffHandle& tiff);

}  // namespace orvane
