#pragma once

#include <QImage>
#include <cstdint>

namespace orvane::sample {

// A photograph-like picture: sky, ranges of hills in the haze, water. Continuous tones with fine
// grain, which is what a lossy coder meets on a page with a photograph.
QImage landscape(QSize pixels, std::uint64_t seed);

}  // namespace orvane::sample
