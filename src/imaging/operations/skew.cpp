#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

#include "imaging/operations/ink_map.h"
#include "imaging/operations/operations.h"

// The skew is the angle at which the ink, summed up along parallel lines, changes most abruptly
// from line to line (W. Postl's criterion): along the lines of text full and empty lines alternate.
// Both the lines of the page and its columns are tried, for vertical text and pages that lie on
// their side.
namespace orvane {
namespace {

constexpr double kCoarseStep = 0.1;  // degrees; narrower than the peak of a rule across a page
constexpr int kCoarseSteps = 70;     // to the largest skew, 7 degrees
constexpr double kFineStep = 0.01;
constexpr int kFineSteps = 15;          // one coarse step and a half
constexpr double kSmallestSkew = 0.03;  // a pixel and a half over the width of A4 at 300 dpi
constexpr double kClearPeak = 2.0;  // chance reaches 1.3 times the median, lines of text over 2.3
constexpr std::size_t kFewestStrips = 16;  // less ink than this is dust

// The ink in strips across the direction of summing: in each strip the ink of every line. Summing
// strips shifted against each other stands for summing along slanted lines.
class InkStrips {
 public:
  enum class Lines { Rows, Columns };

  InkStrips(const InkMap& map, Lines lines) {
    const bool rows = lines == Lines::Rows;
    lines_ = rows ? map.height : map.width;
    const std::size_t length = rows ? map.width : map.height;
    centre_ = static_cast<double>(length) / 2.0;
    strips_ = (length + kStripWidth - 1) / kStripWidth;
    ink_.resize(strips_ * lines_);
    for (std::size_t y = 0; y < map.height; ++y) {
      const std::uint8_t* row = map.ink.data() + y * map.width;
      for (std::size_t x = 0; x < map.width; ++x) {
        ink_[rows ? x / kStripWidth * lines_ + y : y / kStripWidth * lines_ + x] += row[x];
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
    const double slope = std::tan(degrees * std::numbers::pi / 180.0);
    const auto margin = static_cast<std::size_t>(std::ceil(std::abs(slope) * centre_) + 1.0);
    std::vector<std::int32_t> sums(lines_ + 2 * margin);
    for (std::size_t i = 0; i < strips_; ++i) {
      const double middle = (static_cast<double>(i) + 0.5) * kStripWidth - centre_;
      const auto shift = std::lround(static_cast<double>(margin) - slope * middle);
      const std::int32_t* strip = ink_.data() + i * lines_;
      std::int32_t* target =
          sums.data() + std::clamp<long>(shift, 0, static_cast<long>(2 * margin));
      for (std::size_t line = 0; line < lines_; ++line) target[line] += strip[line];
    }
    // Differences over one line place the peak; those over two and four lift it above chance.
    return squaredDifferences(sums, 1) + squaredDifferences(sums, 2) + squaredDifferences(sums, 4);
  }

 private:
  static constexpr std::size_t kStripWidth = 8;

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

// The centre of gravity of the upper half of the peak near `degrees`. A second look, centred on
// what the first one found, sees as much of one slope of the peak as of the other.
double finePeak(const InkStrips& strips, double degrees) {
  for (int look = 0; look < 2; ++look) {
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

}  // namespace

double measureSkew(const Raster& raster, const Resolution& resolution) {
  const InkMap map = findInk(raster, resolution);
  const InkStrips rows(map, InkStrips::Lines::Rows);
  const InkStrips columns(map, InkStrips::Lines::Columns);
  const std::optional<Peak> rowPeak = coarsePeak(rows);
  const std::optional<Peak> columnPeak = coarsePeak(columns);
  if (!rowPeak && !columnPeak) return 0.0;

  const bool byRows = rowPeak && (!columnPeak || rowPeak->clearness >= columnPeak->clearness);
  const double degrees =
      byRows ? finePeak(rows, rowPeak->degrees) : -finePeak(columns, columnPeak->degrees);
  return std::abs(degrees) < kSmallestSkew ? 0.0 : degrees;
}

}  // namespace orvane
