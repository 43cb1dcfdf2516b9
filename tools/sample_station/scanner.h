#pragma once

#include <QImage>
#include <cstdint>

namespace orvane::sample {

// Simulates the scan of a page: uneven light, sensor noise, dust, and the dark line of the lid at
// one edge.

QImage scanColour(const QImage& page, std::uint64_t seed);  // Format_RGB888
QImage scanGray(const QImage& page, std::uint64_t seed);    // Format_Grayscale8
// Format_Mono; a set bit is black.
QImage scanBlackAndWhite(const QImage& page, std::uint64_t seed);

}  // namespace orvane::sample
