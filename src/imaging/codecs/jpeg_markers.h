#pragma once

#include <cstdint>

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
