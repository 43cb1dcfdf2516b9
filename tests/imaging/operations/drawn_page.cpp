#include "imaging/operations/drawn_page.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "imaging/Random.h"

namespace orvane::test {
namespace {

constexpr int kWidth = 620;
constexpr int kHeight = 877;

// The straight page, 1 for ink.
struct Sheet {
  std::vector<std::uint8_t> ink = std::vector<std::uint8_t>(kWidth * kHeight);

  void box(int left, int top, int width, int height, bool swapped = false) {
    if (swapped) std::swap(left, top), std::swap(width, height);
    for (int y = top; y < top + height; ++y) std::fill_n(&ink[y * kWidth + left], width, 1);
  }

  // Words of strokes; every letter stands on its line, some reach above it.
  void text(int left, int top, int right, int bottom, bool swapped = false) {
    Random random(7);
    for (int y = top; y + 10 < bottom; y += 19) {
      for (int x = left; x + 8 < right; x += random.below(6) == 0 ? 12 : 7) {
        box(x, random.below(4) == 0 ? y - 4 : y, 2, 8, swapped);
        box(x, random.below(2) == 0 ? y : y + 6, 5, 2, swapped);
      }
    }
  }
};

Sheet drawn(Drawing drawing) {
  Sheet sheet;
  Random random(11);
  const bool photo = drawing == Drawing::PhotoAndText || drawing == Drawing::Photo;
  if (photo) sheet.box(110, 110, 300, 220);
  if (drawing == Drawing::Text) sheet.text(80, 85, 540, 790);
  if (drawing == Drawing::VerticalText) sheet.text(85, 80, 790, 540, true);
  if (drawing == Drawing::PhotoAndText) sheet.text(80, 400, 540, 790);
  for (int i = 0; drawing == Drawing::Dust && i < 60; ++i) {
    const int size = 1 + static_cast<int>(random.below(6));
    sheet.box(static_cast<int>(random.below(600)), static_cast<int>(random.below(850)), size, size);
  }
  for (const Mark& mark : kMarks) {
    sheet.box(static_cast<int>(mark.x) - 3, static_cast<int>(mark.y) - 3, 7, 7);
  }
  return sheet;
}

}  // namespace

Raster drawnPage(Drawing drawing, double skew, bool darkBed) {
  const Sheet sheet = drawn(drawing);
  Raster form;
  form.bitsPerSample = 8;
  form.model = ColourModel::MinIsBlack;
  Raster page = emptyRaster(form, kWidth, kHeight);
  const double cosine = std::cos(skew * std::numbers::pi / 180.0);
  const double sine = std::sin(skew * std::numbers::pi / 180.0);
  const int bed = darkBed ? 30 : -kHeight;
  Random noise(3);

  const auto inkAt = [&](double dx, double dy) {
    const int x = static_cast<int>(std::floor(dx * cosine - dy * sine + kWidth / 2.0));
    const int y = static_cast<int>(std::floor(dx * sine + dy * cosine + kHeight / 2.0));
    if (std::min({x, y, kWidth - x, kHeight - y}) < bed) return 1;
    const bool outside = x < 0 || y < 0 || x >= kWidth || y >= kHeight;
    return outside ? 0 : static_cast<int>(sheet.ink[static_cast<std::size_t>(y * kWidth + x)]);
  };
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const double dx = i % kWidth + 0.25 - kWidth / 2.0;
    const double dy = static_cast<int>(i / kWidth) + 0.25 - kHeight / 2.0;
    const int quarters =
        inkAt(dx, dy) + inkAt(dx + 0.5, dy) + inkAt(dx, dy + 0.5) + inkAt(dx + 0.5, dy + 0.5);
    const int grain = static_cast<int>(noise.below(9)) - 4;
    page.pixels[static_cast<std::size_t>(i)] =
        static_cast<std::uint8_t>(kPaper - 46 * quarters + grain);
  }
  return page;
}

bool isDark(const Raster& page, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* row = page.row(y);
  if (page.bitsPerSample == 1) return (row[x / 8] >> (7 - x % 8) & 1) != 0;
  return row[x * page.samplesPerPixel] < 128;
}

Raster bilevelOf(const Raster& page) {
  Raster cut = emptyRaster(Raster{}, page.width, page.height);
  for (std::uint32_t i = 0; i < page.width * page.height; ++i) {
    const std::uint32_t x = i % page.width;
    const std::uint32_t y = i / page.width;
    if (isDark(page, x, y)) cut.row(y)[x / 8] |= static_cast<std::uint8_t>(0x80 >> (x % 8));
  }
  return cut;
}

Mark markNear(const Raster& page, Mark place) {
  double sum = 0;
  Mark centre{0, 0};
  for (std::uint32_t i = 0; i < 29 * 29; ++i) {
    const std::uint32_t x = static_cast<std::uint32_t>(place.x) - 14 + i % 29;
    const std::uint32_t y = static_cast<std::uint32_t>(place.y) - 14 + i / 29;
    if (!isDark(page, x, y)) continue;
    sum += 1;
    centre = {centre.x + x + 0.5, centre.y + y + 0.5};
  }
  return {centre.x / sum, centre.y / sum};
}

}  // namespace orvane::test
