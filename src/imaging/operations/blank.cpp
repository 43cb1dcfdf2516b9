#include "imaging/operations/blank.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "imaging/operations/pix.h"

// The share of ink alone does not separate an empty page from one with a page number: a few dozen
// specks of dust are more ink than a digit of 8 points. Their sizes do: no printed or written
// character is smaller than 1 mm, and a speck that large is not taken for one.

namespace orvane {
namespace {

constexpr l_int32 kContrast = 24;             // of 255; the noise of a scanner is below it
constexpr l_int32 kBrightest = 255;           // tones of an 8-bit gray page
constexpr double kMostInk = 0.0002;           // as a share of the page
constexpr double kSmallestMark = 1.0 / 25.4;  // inches
constexpr double kLeastMarks = 300.0;         // of the smallest size, along the longer side
constexpr double kUnstatedDpi = 100.0;

struct BoxaDeleter {
  void operator()(BOXA* boxa) const { boxaDestroy(&boxa); }
};

// The tone that most pixels of an 8-bit gray picture have.
l_int32 commonestTone(const PixHandle& gray) {
  std::array<std::size_t, kBrightest + 1> histogram{};
  for (const std::uint8_t tone : toRaster(gray).pixels) ++histogram[tone];
  return static_cast<l_int32>(std::max_element(histogram.begin(), histogram.end()) -
                              histogram.begin());
}

// The ink of a page as a 1-bit image; null for a page without bright paper.
PixHandle inkOf(const Raster& raster) {
  PixHandle page = toPix(toWorkingForm(raster));
  if (pixGetDepth(page.get()) == 1) return page;
  // Yellow is as bright as paper, but it has no blue.
  if (pixGetDepth(page.get()) == 32) {
    page = checkedPix(pixConvertRGBToGrayMinMax(page.get(), L_CHOOSE_MIN),
                      "pixConvertRGBToGrayMinMax");
  }
  const l_int32 paper = commonestTone(page);
  if (paper <= kBrightest / 2) return nullptr;
  return checkedPix(pixThresholdToBinary(page.get(), paper - kContrast), "pixThresholdToBinary");
}

double shareOf(const PixHandle& ink) {
  l_int32 count = 0;
  pixCountPixels(ink.get(), &count, nullptr);
  return count / (static_cast<double>(pixGetWidth(ink.get())) * pixGetHeight(ink.get()));
}

// The smallest mark in pixels of one direction.
double smallestMark(double dpi, const Resolution& resolution, const PixHandle& ink) {
  const double side = std::max(pixGetWidth(ink.get()), pixGetHeight(ink.get()));
  const double stated = resolution.isStated ? dpi : kUnstatedDpi;
  return std::max(1.0, std::min(stated * kSmallestMark, side / kLeastMarks));
}

bool hasMark(const PixHandle& ink, const Resolution& resolution) {
  const double width = smallestMark(resolution.x, resolution, ink);
  const double height = smallestMark(resolution.y, resolution, ink);
  const auto gap = [](double mark) { return static_cast<l_int32>(std::ceil(mark / 2.0)); };
  const PixHandle joined = checkedPix(
      pixCloseSafeBrick(nullptr, ink.get(), gap(width), gap(height)), "pixCloseSafeBrick");
  const std::unique_ptr<BOXA, BoxaDeleter> marks(pixConnCompBB(joined.get(), 8));
  if (!marks) return true;
  for (l_int32 i = 0; i < boxaGetCount(marks.get()); ++i) {
    l_int32 columns = 0;
    l_int32 rows = 0;
    boxaGetBoxGeometry(marks.get(), i, nullptr, nullptr, &columns, &rows);
    if (columns >= width || rows >= height) return true;
  }
  return false;
}

}  // namespace

double inkShare(const Raster& raster) {
  const PixHandle ink = inkOf(raster);
  return ink ? shareOf(ink) : 1.0;
}

bool isBlank(const Raster& raster, const Resolution& resolution) {
  const PixHandle ink = inkOf(raster);
  return ink && shareOf(ink) <= kMostInk && !hasMark(ink, resolution);
}

}  // namespace orvane
