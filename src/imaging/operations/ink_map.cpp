#include "imaging/operations/ink_map.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "imaging/operations/operations.h"
#include "imaging/operations/pix_raster.h"
#include "imaging/operations/turn.h"
#include "imaging/operations/working_form.h"

namespace orvane {
namespace {

constexpr double kLongSide = 1800;      // a page of A4 at about 150 dots per inch
constexpr std::int32_t kThickest = 81;  // ink is thinner than this in one direction
constexpr std::int32_t kContrast = 40;  // ink is darker than its surroundings by this much

// The pixels of the coarser direction are taken for smaller ones, as many as the finer one has.
Raster reduced(const Raster& raster, const Resolution& resolution) {
  const double rows = rowsPerColumn(resolution);
  const double width = raster.width * std::max(1.0, rows);
  const double height = raster.height * std::max(1.0, 1.0 / rows);
  const double factor = std::ceil(std::max(width, height) / kLongSide);
  const auto size = [&](double side) {
    return static_cast<std::int32_t>(std::max(1.0, side / factor));
  };
  return resize(raster, size(width), size(height));
}

PixHandle grayPix(const Raster& raster) {
  const PixHandle pix = toPix(toWorkingForm(raster));
  return checkedPix(pixConvertTo8(pix.get(), 0), "pixConvertTo8");
}

PixHandle darkerThan(const PixHandle& gray, std::int32_t level) {
  return checkedPix(pixThresholdToBinary(gray.get(), level), "pixThresholdToBinary");
}

// The tone that most of a gray picture has.
std::int32_t commonestTone(const PixHandle& gray) {
  std::array<std::size_t, 256> histogram{};
  for (const std::uint8_t tone : toRaster(gray).pixels) ++histogram[tone];
  return static_cast<std::int32_t>(std::max_element(histogram.begin(), histogram.end()) -
                                   histogram.begin());
}

// Takes away what reaches the border, and what hangs together with a filled area: the slivers that
// the closing leaves along its edges do not lie as the page lies.
PixHandle withoutAreas(const PixHandle& ink, const PixHandle& filled) {
  const PixHandle dark = checkedPix(pixOr(nullptr, ink.get(), filled.get()), "pixOr");
  const PixHandle inner =
      checkedPix(pixRemoveBorderConnComps(dark.get(), 8), "pixRemoveBorderConnComps");
  const PixHandle seed = checkedPix(pixAnd(nullptr, inner.get(), filled.get()), "pixAnd");
  const PixHandle areas =
      checkedPix(pixSeedfillBinary(nullptr, seed.get(), inner.get(), 8), "pixSeedfillBinary");
  return checkedPix(pixSubtract(nullptr, inner.get(), areas.get()), "pixSubtract");
}

}  // namespace

InkMap findInk(const Raster& raster, const Resolution& resolution) {
  const PixHandle gray = grayPix(reduced(raster, resolution));
  // The page as it would be without its ink.
  const PixHandle closed =
      checkedPix(pixCloseGray(gray.get(), kThickest, kThickest), "pixCloseGray");
  const PixHandle withInk =
      checkedPix(pixSubtractGray(nullptr, closed.get(), gray.get()), "pixSubtractGray");
  pixInvert(withInk.get(), withInk.get());
  const PixHandle ink = darkerThan(withInk, 256 - kContrast);
  const PixHandle filled = darkerThan(closed, std::max(0, commonestTone(closed) - kContrast));
  const PixHandle lines = withoutAreas(ink, filled);

  const Raster bits = toRaster(lines);
  InkMap map{bits.width, bits.height, {}};
  map.ink.reserve(std::size_t{map.width} * map.height);
  for (std::uint32_t y = 0; y < bits.height; ++y) {
    const std::uint8_t* row = bits.row(y);
    for (std::uint32_t x = 0; x < bits.width; ++x) {
      map.ink.push_back(static_cast<std::uint8_t>(row[x / 8] >> (7 - x % 8) & 1));
    }
  }
  return map;
}

}  // namespace orvane
