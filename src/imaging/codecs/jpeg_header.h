#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/codecs/HuffmanTable.h"
#include "imaging/codecs/jpeg_quantisation.h"
#include "imaging/page/Bytes.h"

namespace orvane {

/// One colour component of a JPEG stream.
struct JpegComponent {
  std::uint8_t id = 0;
  std::uint8_t horizontal = 1;  ///< sampling factors
  std::uint8_t vertical = 1;
  std::uint8_t quantisation = 0;  ///< indices of its tables
  std::uint8_t dcTable = 0;
  std::uint8_t acTable = 0;
};

/// The head of a baseline JPEG stream with one scan (ITU-T T.81), up to its entropy-coded data.
struct JpegHeader {
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::vector<JpegComponent> components;
  std::array<std::optional<QuantisationTable>, 4> quantisation;  ///< in zigzag order
  std::array<std::optional<HuffmanTable>, 4> dcTables;
  std::array<std::optional<HuffmanTable>, 4> acTables;
  std::uint16_t restartInterval = 0;  ///< in MCUs, 0: none
  bool adobeRgb = false;              ///< an Adobe marker says that the components are no YCbCr
  ByteView data;                      ///< from the first entropy-coded byte to the stream's end

  const QuantisationTable& quantisationOf(const JpegComponent& component) const {
    return *quantisation[component.quantisation];
  }

  /// True when the MCU is a block of the only component, whatever its sampling factors say.
  bool isGray() const { return components.size() == 1; }
  std::uint32_t mcuWidth() const { return isGray() ? 8 : 8u * components[0].horizontal; }
  std::uint32_t mcuHeight() const { return isGray() ? 8 : 8u * components[0].vertical; }
  std::uint32_t mcusPerRow() const { return (width - 1) / mcuWidth() + 1; }
  std::uint32_t mcuRows() const { return (height - 1) / mcuHeight() + 1; }
};

/// Reads the head of a stream. Answers nothing for a stream of another kind: not baseline, more
/// than one scan, not 8 bits a sample, chroma that is subsampled other than 1 x 1, 2 x 1 or 2 x 2.
/// Throws Failure for a damaged one. The result refers to `stream`.
std::optional<JpegHeader> readJpegHeader(ByteView stream);

}  // namespace orvane
