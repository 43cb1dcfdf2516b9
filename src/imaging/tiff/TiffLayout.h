#pragma once

#include <cstdint>
#include <tiffio.h>

#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/Raster.h"
#include "imaging/tiff/TiffHandle.h"

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

  bool throughRgbaReader = false;  ///< see requireRgbaReader in tiff_decode.h
  RasterForm form;                 ///< of the decoded page

  bool isFax() const {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
  }
  bool turnsSideways() const { return orientation >= ORIENTATION_LEFTTOP; }
  /// False when samples have to be picked out of what libtiff decodes.
  bool isStoredAsKept() const {
    return samplesPerPixel == form.samplesPerPixel && (!separatePlanes || samplesPerPixel == 1);
  }
};

/// Reads the layout of the current directory and sets libtiff to decode it. Throws Failure for an
/// image that cannot be decoded here or would need more than 1 GiB.
TiffLayout readTiffLayout(const TiffHandle& tiff);

/// The resolution of the current directory (TIFF 6.0 XResolution, YResolution, ResolutionUnit) in
/// dots per inch. No value or one that no scanner has counts as not stated; a value for one
/// direction alone counts for both. Two unequal values without a unit are in the ratio of the
/// resolution, whose finer direction then counts as 200; equal ones state nothing.
Resolution tiffResolution(TIFF* tiff);

}  // namespace orvane
