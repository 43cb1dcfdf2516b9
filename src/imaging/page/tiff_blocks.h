#pragma once

#include <cstdint>

#include "imaging/page/TiffLayout.h"

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
