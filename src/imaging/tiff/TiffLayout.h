#pragma once

#include <algorithm>
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
  std::uint16_t predictor = PREDICTOR_NONE;
  bool separatePlanes = false;
  bool tiled = false;
  std::uint32_t blockWidth = 0;   ///< of a strip or tile
  std::uint32_t blockHeight = 0;  ///< of a strip or tile; the last strip may be shorter
  std::uint32_t blockCount = 0;   ///< of strips or tiles, in all planes

  std::uint32_t planes() const { return separatePlanes ? samplesPerPixel : 1; }
  std::uint32_t blocksAcross() const { return (width - 1) / blockWidth + 1; }
  /// Of strips or tiles in one plane.
  std::uint32_t areaCount() const { return blocksAcross() * ((height - 1) / blockHeight + 1); }
  /// Calls `visit` with the area of each strip or tile of a plane inside the page, and its index.
  template <typename Visit>
  void forEachArea(Visit visit) const {
    for (std::uint32_t i = 0; i < areaCount(); ++i) {
      const std::uint32_t x = i % blocksAcross() * blockWidth;
      const std::uint32_t y = i / blocksAcross() * blockHeight;
      visit(PageArea{x, y, std::min(blockWidth, width - x), std::min(blockHeight, height - y)}, i);
    }
  }

  /// Encoded bytes that are held at a time: of the largest strip or tile, or of all strips of a
  /// Group 4 page, as far as the file goes.
  std::uint64_t encodedBytes = 0;
  bool blocksOverlap = false;  ///< they are longer than the file together

  bool throughRgbaReader = false;  ///< see tiff_rgba.h
  RasterForm form;                 ///< of the decoded page

  bool isGroup4InStrips() const { return compression == COMPRESSION_CCITTFAX4 && !tiled; }
  bool isFax() const {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
  }
  /// SGILog keeps logarithms; libtiff makes 8-bit gray or RGB of them as it decodes.
  bool isSgiLog() const {
    return compression == COMPRESSION_SGILOG || compression == COMPRESSION_SGILOG24;
  }
  bool isLab() const {
    return photometric == PHOTOMETRIC_CIELAB || photometric == PHOTOMETRIC_ICCLAB;
  }
  bool isLogarithmic() const {
    return photometric == PHOTOMETRIC_LOGL || photometric == PHOTOMETRIC_LOGLUV;
  }
  bool turnsSideways() const { return orientation >= ORIENTATION_LEFTTOP; }
  /// The form of the samples that are decoded: `form`, unless those are Lab.
  RasterForm sampleForm() const;
  /// Bytes of the decoded page.
  std::uint64_t decodedBytes() const { return std::uint64_t{form.rowBytes(width)} * height; }
  /// The most bytes that Group 4 codes for the rows of a strip can take: not quite 6 bits a pixel
  /// for one of every length, and as much again for writers that waste some.
  std::uint64_t mostGroup4Bytes() const {
    return std::uint64_t{blockHeight} * (2 * std::uint64_t{width} + 16) + 16;
  }
  /// False when samples have to be picked out of what libtiff decodes.
  bool isStoredAsKept() const {
    return samplesPerPixel == form.samplesPerPixel && (!separatePlanes || samplesPerPixel == 1);
  }
};

/// Reads the layout of the current directory. Throws Failure for an image that cannot be decoded
/// here.
TiffLayout readTiffLayout(const TiffHandle& tiff);

/// The resolution of the current directory (TIFF 6.0 XResolution, YResolution, ResolutionUnit) in
/// dots per inch. No value or one that no scanner has counts as not stated; a value for one
/// direction alone counts for both. Two unequal values without a unit are in the ratio of the
/// resolution, whose finer direction then counts as 200; equal ones state nothing.
Resolution tiffResolution(TIFF* tiff);

}  // namespace orvane
