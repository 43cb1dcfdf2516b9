#pragma once

#include <QImage>
#include <cstdint>

namespace orvane::sample {

// A picture like a photograph: sky, hazy ranges of hills, water. It has continuous tones and fine
// grain, so that a lossy coder works as on a page with a photograph.
QImage landscape(QSize pixels, std::uint64_t seed);

}  // namespace orvane::sample
