#pragma once

#include <cstdint>

#include "imaging/page/TiffLayout.h"

namespace orvane {

/// Decodes strips and tiles one by one, and gets out of a damaged one what there is.
class TiffBlockReader {
 public:
  TiffBlockReader(TiffHandle& tiff, const TiffLayout& layout);

  /// Decodes block `index` to `to`, `rows` rows of `rowBytes` bytes each. Where data is missing
  /// `to` keeps what it held, which must be paper.
  void read(std::uint32_t index, std::uint8_t* to, std::uint32_t rows, std::size_t rowBytes);

  /// True when a block could not be decoded whole.
  bool failed() const { return failed_; }

 private:
  void readCutBlock(std::uint32_t index, std::uint8_t* to, std::uint32_t rows,
                    std::size_t rowBytes);

  TiffHandle& tiff_;
  const TiffLayout& layout_;
  bool partialDataIsReadable_;
  bool failed_ = false;
};

}  // namespace orvane
