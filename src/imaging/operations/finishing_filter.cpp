#include "imaging/operations/finishing_filter.h"

#include <utility>

#include "foundation/Failure.h"
#include "imaging/operations/pix.h"

namespace orvane {
namespace {

struct SelDeleter {
  void operator()(SEL* sel) const { selDestroy(&sel); }
};

// The ink pixels without ink among their eight neighbours. White holes are left alone: filling them
// could close the counters of small characters.
PixHandle singlePixels(const PixHandle& page) {
  const std::unique_ptr<SEL, SelDeleter> single(
      selCreateFromString("ooo"
                          "oXo"
                          "ooo",
                          3, 3, nullptr));
  return checkedPix(pixHMT(nullptr, page.get(), single.get()), "pixHMT");
}

// The pixels of `specks` with fewer than `most` of them in the square window around them,
// themselves included.
PixHandle lonely(const PixHandle& specks, l_int32 reach, l_int32 most) {
  const PixHandle ones = checkedPix(pixConvert1To8(nullptr, specks.get(), 0, 1), "pixConvert1To8");
  const PixHandle sums = checkedPix(pixBlockconvGrayUnnormalized(ones.get(), reach, reach),
                                    "pixBlockconvGrayUnnormalized");
  const PixHandle counts =
      checkedPix(pixConvert32To8(sums.get(), L_LS_TWO_BYTES, L_CLIP_TO_FF), "pixConvert32To8");
  const PixHandle few =
      checkedPix(pixThresholdToBinary(counts.get(), most), "pixThresholdToBinary");
  return checkedPix(pixAnd(nullptr, specks.get(), few.get()), "pixAnd");
}

// The threshold spares dithered pictures: a gray of 2 percent loses less than one dot in 200, while
// of specks strewn over a thousandth of a page 997 in 1,000 are removed, and of five thousandths 86
// in 100.
Raster despeckled(const Raster& page) {
  constexpr l_int32 kReach = 10;  // pixels to each side
  constexpr l_int32 kGroup = 5;   // specks within reach, itself included, that spare one
  requireRoom(page.width, page.height, 32);
  // The margin keeps what Leptonica does at the border of an image away from the page.
  const PixHandle pix = checkedPix(pixAddBorder(toPix(page).get(), 2 * kReach, 0), "pixAddBorder");
  const PixHandle specks = lonely(singlePixels(pix), kReach, kGroup);
  const PixHandle clean = checkedPix(pixSubtract(nullptr, pix.get(), specks.get()), "pixSubtract");
  return toRaster(checkedPix(pixRemoveBorder(clean.get(), 2 * kReach), "pixRemoveBorder"));
}

// Adds a border in which the outermost pixels of the page are repeated.
PixHandle withEdgesRepeated(const PixHandle& page, l_int32 border) {
  PixHandle wide = checkedPix(pixAddBorder(page.get(), border, 0), "pixAddBorder");
  PIX* const pix = wide.get();
  const l_int32 width = pixGetWidth(pix), height = pixGetHeight(pix);
  const l_int32 right = width - 1 - border, bottom = height - 1 - border;
  for (l_int32 i = 0; i < border; ++i) {
    pixRasterop(pix, i, border, 1, bottom - border + 1, PIX_SRC, pix, border, border);
    pixRasterop(pix, right + 1 + i, border, 1, bottom - border + 1, PIX_SRC, pix, right, border);
  }
  for (l_int32 i = 0; i < border; ++i) {
    pixRasterop(pix, 0, i, width, 1, PIX_SRC, pix, 0, border);
    pixRasterop(pix, 0, bottom + 1 + i, width, 1, PIX_SRC, pix, 0, bottom);
  }
  return wide;
}

// At the border of an image Leptonica leaves pixels as they are, so the border is outside the page.
Raster sharpened(const Raster& page, float strength, std::int16_t halfWidth) {
  requireRoom(page.width + 2.0 * halfWidth, page.height + 2.0 * halfWidth, 32);
  const PixHandle pix = withEdgesRepeated(toPix(page), halfWidth);
  const PixHandle sharp =
      checkedPix(pixUnsharpMasking(pix.get(), halfWidth, strength), "pixUnsharpMasking");
  return toRaster(checkedPix(pixRemoveBorder(sharp.get(), halfWidth), "pixRemoveBorder"));
}

}  // namespace

Raster finishingFilter(Raster raster, float strength, std::int16_t halfWidth) {
  if (!(strength >= 0.0f && strength <= 1.0f)) {
    throw Failure("the strength of the finishing filter must be between 0 and 1");
  }
  if (halfWidth < 1) throw Failure("the half-width of the finishing filter must be at least 1");

  const Raster page = toWorkingForm(std::move(raster));
  return page.bitsPerSample == 1 ? despeckled(page) : sharpened(page, strength, halfWidth);
}

}  // namespace orvane
