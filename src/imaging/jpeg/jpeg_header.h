#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/jpeg/HuffmanTable.h"
#include "imaging/jpeg/jpeg.h"
#include "imaging/raster/EncodedImage.h"

/// Markers of a JPEG stream (ITU-T T.81 table B.1), each to follow a byte 0xFF.

namespace orvane::jpeg_marker {

inline constexpr std::uint8_t kFrameBaseline = 0xC0;
inline constexpr std::uint8_t kHuffmanTables = 0xC4;
inline constexpr std::uint8_t kRestart0 = 0xD0;  ///< and the seven behind it
inline constexpr std::uint8_t kStartOfImage = 0xD8;
inline constexpr std::uint8_t kEndOfImage = 0xD9;
inline constexpr std::uint8_t kStartOfScan = 0xDA;
inline constexpr std::uint8_t kQuantisationTables = 0xDB;
inline constexpr std::uint8_t kRestartInterval = 0xDD;
inline constexpr std::uint8_t kApplication0 = 0xE0;  ///< and the fifteen behind it
inline constexpr std::uint8_t kAdobe = 0xEE;
inline constexpr std::uint8_t kComment = 0xFE;

}  // namespace orvane::jpeg_marker

namespace orvane {

/// A quantisation table in the order of a block's rows.
using QuantisationTable = std::array<std::uint16_t, 64>;

/// The example tables of ITU-T T.81 Annex K.1.
extern const QuantisationTable kAnnexKLuminance;
extern const QuantisationTable kAnnexKChrominance;

/// The place in a table of each coefficient in zigzag order (T.81 figure A.6).
extern const std::array<std::uint8_t, 64> kZigzag;

struct JpegTables {
  QuantisationTable luminance;
  QuantisationTable chrominance;
};

/// How much of the Annex K tables a quality of 1 to 100 takes, in percent, by the rule of libjpeg:
/// 50 takes them as they are. Other qualities are held to that range.
int quantisationPercent(int quality);

/// The tables of a save with `factors`: Annex K scaled, each entry from 1 to 255.
JpegTables quantisationTables(JpegFactors factors);

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

/// A resolution as a JFIF density: whole dots per inch, 1 to 65535.
inline std::uint16_t jfifDensity(double dotsPerInch) {
  if (!(dotsPerInch >= 1.0)) return 1;  // no number is below 1 too
  return static_cast<std::uint16_t>(std::lround(std::min(dotsPerInch, 65535.0)));
}

/// The head of a JFIF stream, up to its entropy-coded data: the frame, scan and tables of `header`.
Bytes jpegHead(const JpegHeader& header, const Resolution& resolution);

}  // namespace orvane
