#pragma once

#include <array>
#include <cstdint>

#include "imaging/page/Bytes.h"
#include "imaging/page/Raster.h"

namespace orvane {

/// Turns pixels of one byte a sample into 8-bit gray (MinIsBlack) or RGB, with alpha blended over
/// white.
class PixelColours {
 public:
  explicit PixelColours(const Raster& form);

  /// 1 for gray, 3 for RGB.
  std::uint16_t samples() const { return samples_; }

  /// Converts the pixels of one row.
  void convert(ByteView pixels, std::uint8_t* colours) const;

 private:
  using Colour = std::array<std::uint8_t, 3>;

  void readPalette(const Raster& form);
  void convertColours(ByteView pixels, std::uint8_t* colours) const;
  void blendOverWhite(ByteView pixels, std::uint8_t* colours) const;

  ColourModel model_;
  ExtraSample extraSample_;
  std::size_t step_;  ///< samples of a source pixel
  std::uint16_t samples_ = 1;
  std::array<Colour, 256> palette_{};
};

}  // namespace orvane
