#pragma once

#include <array>
#include <cstdint>

#include "imaging/codecs/jpeg.h"

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

}  // namespace orvane
