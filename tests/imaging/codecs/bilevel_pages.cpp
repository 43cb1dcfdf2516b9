#include "imaging/codecs/bilevel_pages.h"

#include <algorithm>

namespace orvane::test {
namespace {

void blacken(Raster& page, std::uint32_t left, std::uint32_t top, std::uint32_t w,
             std::uint32_t h) {
  for (std::uint32_t y = top; y < std::min(page.height, top + h); ++y) {
    for (std::uint32_t x = left; x < std::min(page.width, left + w); ++x) {
      page.row(y)[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    }
  }
}

void drawBoxes(Raster& page, Random& random, std::uint32_t count, std::uint32_t size) {
  for (std::uint32_t i = 0; i < count; ++i) {
    blacken(page, random.below(page.width), random.below(page.height), 1 + random.below(size),
            1 + random.below(size));
  }
}

void addNoise(Raster& page, Random& random, std::uint32_t oneIn) {
  for (std::uint32_t y = 0; y < page.height; ++y) {
    for (std::uint32_t x = 0; x < page.width; ++x) {
      if (random.below(oneIn) == 0) blacken(page, x, y, 1, 1);
    }
  }
}

void drawSlants(Raster& page, Random& random) {
  std::uint32_t left = random.below(page.width);
  for (std::uint32_t y = 0; y < page.height; ++y) {
    for (std::uint32_t x = left; x < page.width; x += 9 + random.below(3)) {
      blacken(page, x, y, 4 + random.below(3), 1);
    }
    left = (left + random.below(3) + page.width - 1) % page.width;
  }
}

}  // namespace

Raster bilevelPage(Random& random, int kind, std::uint32_t width, std::uint32_t height) {
  Raster page;
  page.width = width;
  page.height = height;
  page.pixels.assign(page.rowBytes() * height, 0);
  if (kind == 1) blacken(page, 0, 0, width, height);
  if (kind == 2) addNoise(page, random, 2 + random.below(30));
  if (kind == 3) drawBoxes(page, random, 1 + random.below(8), 1 + std::max(width, height) / 3);
  if (kind == 4) drawBoxes(page, random, 1 + width * height / 300, 9);
  if (kind == 5) drawSlants(page, random);
  return page;
}

}  // namespace orvane::test
