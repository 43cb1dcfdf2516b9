#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/Bytes.h"
#include "imaging/jpeg/jpeg_tables.h"
#include "imaging/raster/EncodedImage.h"
#include "imaging/raster/jpeg_markers.h"

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

/// The head of a baseline JPEG stream with one scan (ITU-T T.81): all that comes before its
/// entropy-coded data.
struct JpegHeader {
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::vector<JpegComponent> components;
  std::array<std::optional<ZigzagTable>, 4> quantisation;
  std::array<std::optional<HuffmanTable>, 4> dcTables;
  std::array<std::optional<HuffmanTable>, 4> acTables;
  std::uint16_t restartInterval = 0;  ///< in MCUs, 0: none

  const ZigzagTable& quantisationOf(std::size_t component) const {
    return *quantisation[components[component].quantisation];
  }
  const HuffmanTable& dcTableOf(std::size_t component) const {
    return *dcTables[components[component].dcTable];
  }
  const HuffmanTable& acTableOf(std::size_t component) const {
    return *acTables[components[component].acTable];
  }

  /// Then an MCU is a block of the only component, whatever its sampling factors say.
  bool isGray() const { return components.size() == 1; }
  std::uint32_t blocksPerMcu(std::size_t component) const {
    return isGray() ? 1u : 1u * components[component].horizontal * components[component].vertical;
  }
  std::uint32_t mcuWidth() const { return isGray() ? 8 : 8u * components[0].horizontal; }
  std::uint32_t mcuHeight() const { return isGray() ? 8 : 8u * components[0].vertical; }
  std::uint32_t mcusPerRow() const { return (width - 1) / mcuWidth() + 1; }
  std::uint32_t mcuCount() const { return mcusPerRow() * ((height - 1) / mcuHeight() + 1); }
};

/// A stream that has been read up to its entropy-coded data. Its components have all their tables.
struct JpegSource : JpegHeader {
  bool adobeRgb = false;  ///< an Adobe marker says that the components are not YCbCr
  ByteView data;          ///< from the first entropy-coded byte to the stream's end
};

/// Reads the tables that several streams share, from a stream of tables only (T.81 B.5) or an empty
/// one. Answers nothing for tables that baseline streams do not have. Throws Failure for a damaged
/// stream.
std::optional<JpegHeader> readJpegTables(ByteView stream);

/// Reads the head of a stream, which may lack tables that it shares with others. Answers nothing
/// for a stream of another kind: not baseline, more than one scan, not 8 bits a sample, chroma that
/// is subsampled other than 1 x 1, 2 x 1 or 2 x 2. Throws Failure for a damaged one. The result
/// refers to `stream`.
std::optional<JpegSource> readJpegHeader(ByteView stream, const JpegHeader& sharedTables = {});

/// A resolution as a JFIF density: whole dots per inch, 1 to 65535.
std::uint16_t jfifDensity(double dotsPerInch);

/// The head of a JFIF stream.
Bytes jfifHead(const JpegHeader& header, const Resolution& resolution);

/// Appends a marker that has no segment.
void appendMarker(Bytes& stream, std::uint8_t marker);

}  // namespace orvane
