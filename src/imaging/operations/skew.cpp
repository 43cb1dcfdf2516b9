#include "imaging/operations/skew.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

#include "imaging/operations/pix.h"
#include "imaging/operations/resize.h"
#include "imaging/operations/rotate.h"

// The skew is the angle at which the ink, summed along parallel lines, changes most abruptly from
// line to line (W. Postl's criterion): across lines of text full and empty sums alternate. Both the
// rows and the columns of the page are tried, for vertical text and for pages scanned on their
// side. A signature, a stamp or a few words have such an angle too, which says nothing of the page:
// the lines at the angle must add up to more than the width of the page.
//
// Leptonica's own search (pixFindSkewSweepAndSearch on the same ink) is up to 0.2 degrees off, and
// its confidence does not separate a page of text from a signature.

namespace orvane {
namespace {

constexpr double kLongSide = 1800;      // a page of A4 at about 150 dots per inch
constexpr std::int32_t kThickest = 81;  // ink is thinner than this in one direction
constexpr std::int32_t kContrast = 40;  // ink is darker than its surroundings by this much

// The page in the proportions of the paper: pixels of the coarser direction count several times.
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

// Removes what reaches the border and what is connected to a filled area: the slivers that the
// closing leaves along its edges do not have the skew of the page.
PixHandle withoutAreas(const PixHandle& ink, const PixHandle& filled) {
  const PixHandle dark = checkedPix(pixOr(nullptr, ink.get(), filled.get()), "pixOr");
  const PixHandle inner =
      checkedPix(pixRemoveBorderConnComps(dark.get(), 8), "pixRemoveBorderConnComps");
  const PixHandle seed = checkedPix(pixAnd(nullptr, inner.get(), filled.get()), "pixAnd");
  const PixHandle areas =
      checkedPix(pixSeedfillBinary(nullptr, seed.get(), inner.get(), 8), "pixSeedfillBinary");
  return checkedPix(pixSubtract(nullptr, inner.get(), areas.get()), "pixSubtract");
}

// Where a page, made smaller, has ink: text, rules and frames, as a 1-bit image. Photographs,
// filled areas, a dark scanner bed around the page and everything else that reaches its border are
// not ink.
PixHandle findInk(const Raster& raster, const Resolution& resolution) {
  const PixHandle gray = grayPix(reduced(raster, resolution));
  // The page as it would be without its ink.
  const PixHandle closed =
      checkedPix(pixCloseGray(gray.get(), kThickest, kThickest), "pixCloseGray");
  const PixHandle withInk =
      checkedPix(pixSubtractGray(nullptr, closed.get(), gray.get()), "pixSubtractGray");
  pixInvert(withInk.get(), withInk.get());
  const PixHandle ink = darkerThan(withInk, 256 - kContrast);
  const PixHandle filled = darkerThan(closed, std::max(0, commonestTone(closed) - kContrast));
  return withoutAreas(ink, filled);
}

constexpr double kCoarseStep = 0.1;  // degrees; narrower than the peak of a rule across a page
constexpr int kCoarseSteps = 70;     // to the largest skew, 7 degrees
constexpr double kFineStep = 0.01;
constexpr int kFineSteps = 15;          // one coarse step and a half
constexpr double kSmallestSkew = 0.03;  // a pixel and a half over the width of A4 at 300 dpi
constexpr double kClearPeak = 2.0;  // chance reaches 1.3 times the median, lines of text over 2.3
constexpr std::size_t kFewestStrips = 16;  // less ink than this is dust
// Shares of the page's width. On A4 three lines of text over two thirds of the width come to 1.8,
// four over half of it to 1.6 and a frame to 1.5; a signature and a stamp of five lines to 1.0.
constexpr double kLeastOfLines = 1.25;
constexpr double kShortestLine = 0.2;

// The ink in strips across the direction of summing: in each strip the ink of every line. Sums of
// strips that are shifted against each other replace sums along slanted lines.
class InkStrips {
 public:
  enum class Lines { Rows, Columns };

  InkStrips(const Raster& ink, Lines lines) {
    const bool rows = lines == Lines::Rows;
    lines_ = rows ? ink.height : ink.width;
    const std::size_t length = rows ? ink.width : ink.height;
    centre_ = static_cast<double>(length) / 2.0;
    strips_ = (length + kStripWidth - 1) / kStripWidth;
    ink_.resize(strips_ * lines_);
    for (std::uint32_t y = 0; y < ink.height; ++y) {
      const std::uint8_t* row = ink.row(y);
      for (std::size_t x = 0; x < ink.width; ++x) {
        ink_[rows ? x / kStripWidth * lines_ + y : y / kStripWidth * lines_ + x] +=
            shallowSample(row, x, 1);
      }
    }
  }

  std::size_t stripsWithInk() const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < strips_; ++i) {
      const auto begin = ink_.begin() + static_cast<std::ptrdiff_t>(i * lines_);
      const auto end = begin + static_cast<std::ptrdiff_t>(lines_);
      if (std::any_of(begin, end, [](std::int32_t ink) { return ink != 0; })) ++count;
    }
    return count;
  }

  // How abruptly the ink changes between lines that drop by `degrees` towards higher coordinates.
  double contrast(double degrees) const {
    const std::vector<std::int32_t> sums = sumsAlong(degrees, [](std::int32_t ink) { return ink; });
    // Differences over one line place the peak; those over two and four lift it above chance.
    return squaredDifferences(sums, 1) + squaredDifferences(sums, 2) + squaredDifferences(sums, 4);
  }

  // The length of all lines of text and rules that drop by `degrees`, in widths of the page. A line
  // counts with the strips in which it has ink at its fullest height. It ends when they have become
  // half as many; the next one begins when they are twice as many again.
  double lengthOfLines(double degrees) const {
    const double shortest = kShortestLine * static_cast<double>(strips_);
    std::int32_t total = 0;
    std::int32_t fullest = 0;
    std::int32_t emptiest = 0;
    bool inLine = false;
    for (const std::int32_t filled :
         sumsAlong(degrees, [](std::int32_t ink) { return ink != 0 ? 1 : 0; })) {
      if (inLine) {
        fullest = std::max(fullest, filled);
        if (2 * filled > fullest) continue;
        total += fullest;
        emptiest = filled;
        inLine = false;
      } else {
        emptiest = std::min(emptiest, filled);
        fullest = filled;
        inLine = filled >= shortest && filled >= 2 * emptiest;
      }
    }
    return total / static_cast<double>(strips_);
  }

 private:
  static constexpr std::size_t kStripWidth = 8;

  // The sums of `amountOf` the ink along lines that drop by `degrees`, with a margin of empty
  // lines.
  template <typename AmountOf>
  std::vector<std::int32_t> sumsAlong(double degrees, AmountOf amountOf) const {
    const double slope = std::tan(degrees * std::numbers::pi / 180.0);
    const auto margin = static_cast<std::size_t>(std::ceil(std::abs(slope) * centre_) + 1.0);
    std::vector<std::int32_t> sums(lines_ + 2 * margin);
    for (std::size_t i = 0; i < strips_; ++i) {
      const double middle = (static_cast<double>(i) + 0.5) * kStripWidth - centre_;
      const auto shift = std::lround(static_cast<double>(margin) - slope * middle);
      const std::int32_t* strip = ink_.data() + i * lines_;
      std::int32_t* target =
          sums.data() + std::clamp<long>(shift, 0, static_cast<long>(2 * margin));
      for (std::size_t line = 0; line < lines_; ++line) target[line] += amountOf(strip[line]);
    }
    return sums;
  }

  static double squaredDifferences(const std::vector<std::int32_t>& sums, std::size_t distance) {
    std::int64_t total = 0;
    for (std::size_t i = distance; i < sums.size(); ++i) {
      const std::int64_t difference = sums[i] - sums[i - distance];
      total += difference * difference;
    }
    return static_cast<double>(total);
  }

  std::size_t lines_ = 0;
  std::size_t strips_ = 0;
  double centre_ = 0.0;
  std::vector<std::int32_t> ink_;  // strip after strip
};

struct Peak {
  double degrees = 0.0;
  double clearness = 0.0;  // the contrast there over the median of all angles
};

std::optional<Peak> coarsePeak(const InkStrips& strips) {
  if (strips.stripsWithInk() < kFewestStrips) return std::nullopt;
  std::vector<double> contrasts;
  for (int i = -kCoarseSteps; i <= kCoarseSteps; ++i) {
    contrasts.push_back(strips.contrast(i * kCoarseStep));
  }

  const auto highest = std::max_element(contrasts.begin(), contrasts.end());
  const auto index = static_cast<int>(highest - contrasts.begin()) - kCoarseSteps;
  const double height = *highest;
  const auto middle = contrasts.begin() + kCoarseSteps;
  std::nth_element(contrasts.begin(), middle, contrasts.end());
  if (std::abs(index) == kCoarseSteps || height < kClearPeak * *middle) return std::nullopt;
  return Peak{index * kCoarseStep, height / *middle};
}

// The centre of gravity of the upper half of the peak near `degrees`. The second pass is centred on
// the result of the first one, so that it covers both slopes of the peak equally.
double finePeak(const InkStrips& strips, double degrees) {
  for (int pass = 0; pass < 2; ++pass) {
    std::vector<double> contrasts;
    for (int i = -kFineSteps; i <= kFineSteps; ++i) {
      contrasts.push_back(strips.contrast(degrees + i * kFineStep));
    }
    const auto [lowest, highest] = std::minmax_element(contrasts.begin(), contrasts.end());
    const double half = (*lowest + *highest) / 2.0;

    double weights = 0.0;
    double moment = 0.0;
    for (int i = -kFineSteps; i <= kFineSteps; ++i) {
      const double above =
          std::max(0.0, contrasts[static_cast<std::size_t>(i + kFineSteps)] - half);
      weights += above;
      moment += above * i * kFineStep;
    }
    if (weights > 0.0) degrees += moment / weights;
  }
  return degrees;
}

std::optional<Peak> findPeak(const InkStrips& strips) {
  std::optional<Peak> peak = coarsePeak(strips);
  if (!peak) return std::nullopt;
  peak->degrees = finePeak(strips, peak->degrees);
  if (strips.lengthOfLines(peak->degrees) < kLeastOfLines) return std::nullopt;
  return peak;
}

}  // namespace

double measureSkew(const Raster& raster, const Resolution& resolution) {
  const Raster ink = toRaster(findInk(raster, resolution));
  const std::optional<Peak> rows = findPeak(InkStrips(ink, InkStrips::Lines::Rows));
  const std::optional<Peak> columns = findPeak(InkStrips(ink, InkStrips::Lines::Columns));
  if (!rows && !columns) return 0.0;

  const bool byRows = rows && (!columns || rows->clearness >= columns->clearness);
  const double degrees = byRows ? rows->degrees : -columns->degrees;
  return std::abs(degrees) < kSmallestSkew ? 0.0 : degrees;
}

namespace {

constexpr double kQuickLongSide = 430;  // a page of A4 at about 36 dots per inch
constexpr double kQuickShare = 0.6;     // of the skew that is asked for

PixHandle smaller(const PixHandle& pix, int factor) {
  PIX* source = pix.get();
  if (pixGetDepth(source) != 1) {
    const auto scale = static_cast<l_float32>(1.0 / factor);
    return checkedPix(pixScaleAreaMap(source, scale, scale), "pixScaleAreaMap");
  }
  switch (factor) {
    case 2:
      return checkedPix(pixScaleToGray2(source), "pixScaleToGray2");
    case 4:
      return checkedPix(pixScaleToGray4(source), "pixScaleToGray4");
    case 8:
      return checkedPix(pixScaleToGray8(source), "pixScaleToGray8");
    default:
      return checkedPix(pixScaleToGray16(source), "pixScaleToGray16");
  }
}

// The page in a size that is quick to measure; nothing if it is small already.
std::optional<Raster> quickPicture(const Raster& raster) {
  const double shrinking = std::max(raster.width, raster.height) / kQuickLongSide;
  if (shrinking < 2.0) return std::nullopt;
  const int factor = shrinking < 4.0 ? 2 : shrinking < 8.0 ? 4 : shrinking < 16.0 ? 8 : 16;
  if (std::min(raster.width, raster.height) < 16U * static_cast<unsigned>(factor)) {
    return std::nullopt;
  }
  PixHandle pix = toPix(toWorkingForm(raster));
  if (pixGetDepth(pix.get()) == 32) {
    pix = checkedPix(pixConvertTo8(pix.get(), 0), "pixConvertTo8");
  }
  return toRaster(smaller(pix, factor));
}

}  // namespace

double skewBeyond(double degrees, const Raster& raster, const Resolution& resolution) {
  if (const std::optional<Raster> picture = quickPicture(raster)) {
    const double skew = std::abs(measureSkew(*picture, resolution));
    if (skew > 0.0 && skew < kQuickShare * degrees) return 0.0;
  }
  const double skew = measureSkew(raster, resolution);
  return std::abs(skew) > degrees ? skew : 0.0;
}

}  // namespace orvane
