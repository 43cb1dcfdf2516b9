#pragma once

#include <cstdint>

#include "imaging/tiff/TiffLayout.h"
#include "imaging/tiff/TiffPage.h"

namespace orvane {

/// What came of the strips or tiles of a page.
struct BlockTally {
  bool allWhole = true;
  bool anyRow = false;  ///< at least one row of pixels could be decoded
};

/// Decodes strips and tiles one by one, and gets out of a damaged one what there is.
class TiffBlockReader {
 public:
  TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout);

  /// Decodes block `index` to `to`, `rows` rows of `rowBytes` bytes each. Where data is missing
  /// `to` keeps what it held, which must be paper.
  void read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);

  const BlockTally& tally() const { return tally_; }

 private:
  bool decode(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);
  bool decodeCut(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);
  bool givesARow(std::uint32_t index, std::size_t rowBytes);

  TiffHandle& tiff_;
  const TiffLayout& layout_;
  bool partialDataIsReadable_;
  BlockTally tally_;
};

}  // namespace orvane

/// libtiff's own conversion of a page to 8-bit RGB (its RGBA reader), for colours whose samples are
/// not RGB: YCbCr that is not plain JPEG, colour in old-style JPEG, CIELab and ICCLab.

namespace orvane {

/// Throws Failure with libtiff's reason when its RGBA reader does not know such a page.
void requireRgbaReader(const TiffHandle& tiff, const TiffLayout& layout);

/// Decodes the current directory to `raster`, which is 8-bit RGB, holds paper and is as large as
/// the page as stored. A strip or tile that cannot be decoded whole stays paper.
BlockTally decodeThroughRgba(const TiffHandle& tiff, const TiffLayout& layout, Raster& raster);

/// Decodes the current directory, upright. Damage is reported in the result; a page of which
/// nothing can be decoded throws Failure. See TiffPage::decode.
DecodedPage decodeTiff(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows);

/// Fills `raster`, which holds paper and is as large as the page as stored, with the samples that
/// are kept.
BlockTally decodeSamples(TiffHandle& tiff, const TiffLayout& layout, const StripRows& codedRows,
                         Raster& raster);

}  // namespace orvane
