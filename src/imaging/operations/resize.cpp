#include "imaging/operations/resize.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "imaging/operations/pix.h"

namespace orvane {
namespace {

// Which source pixels, with which weights, make each target pixel along one axis. The weights of
// one target pixel sum to 1. Computed here because Leptonica positions pixels to 1/16: its area
// mapping is up to 8 levels off, and between 0.7 and 1 it interpolates instead.
class AxisMap {
 public:
  struct Part {
    std::uint32_t first;
    std::uint32_t count;
    const float* weights;
  };

  AxisMap(std::uint32_t sourceSize, std::uint32_t targetSize) {
    ends_.reserve(targetSize);
    firsts_.reserve(targetSize);
    const double scale = static_cast<double>(sourceSize) / targetSize;
    for (std::uint32_t i = 0; i < targetSize; ++i) {
      if (targetSize < sourceSize) {
        addArea(i * scale, std::min((i + 1) * scale, static_cast<double>(sourceSize)));
      } else {
        addInterpolation((i + 0.5) * scale - 0.5, sourceSize);
      }
      ends_.push_back(weights_.size());
    }
  }

  Part part(std::uint32_t i) const {
    const std::size_t begin = i == 0 ? 0 : ends_[i - 1];
    return {firsts_[i], static_cast<std::uint32_t>(ends_[i] - begin), weights_.data() + begin};
  }

 private:
  // The weight of a source pixel is the share of the target pixel that it covers.
  void addArea(double from, double to) {
    const auto first = static_cast<std::uint32_t>(from);
    firsts_.push_back(first);
    for (std::uint32_t pixel = first; pixel < to - 1e-7; ++pixel) {
      const double covered = std::min(to, pixel + 1.0) - std::max<double>(from, pixel);
      weights_.push_back(static_cast<float>(covered / (to - from)));
    }
  }

  void addInterpolation(double centre, std::uint32_t sourceSize) {
    const double inside = std::clamp(centre, 0.0, sourceSize - 1.0);
    const auto first = static_cast<std::uint32_t>(inside);
    const auto share = static_cast<float>(inside - first);
    firsts_.push_back(first);
    weights_.push_back(1.0f - share);
    if (share > 0.0f) weights_.push_back(share);
  }

  std::vector<std::uint32_t> firsts_;
  std::vector<std::size_t> ends_;
  std::vector<float> weights_;
};

// The samples of a row as brightness: a 1-bit row becomes 0 for ink and 255 for paper.
void readRow(const Raster& page, std::uint32_t y, std::vector<float>& samples) {
  const std::uint8_t* row = page.row(y);
  if (page.bitsPerSample == 8) {
    std::copy_n(row, samples.size(), samples.begin());
    return;
  }
  for (std::size_t x = 0; x < samples.size(); ++x) {
    samples[x] = (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 0.0f : 255.0f;
  }
}

void writeRow(const std::vector<float>& samples, Raster& page, std::uint32_t y) {
  std::uint8_t* row = page.row(y);
  if (page.bitsPerSample == 8) {
    for (std::size_t x = 0; x < samples.size(); ++x) {
      row[x] = static_cast<std::uint8_t>(std::clamp(samples[x] + 0.5f, 0.0f, 255.0f));
    }
    return;
  }
  for (std::size_t x = 0; x < samples.size(); ++x) {
    if (samples[x] < 127.5f) row[x / 8] |= static_cast<std::uint8_t>(0x80u >> (x % 8));
  }
}

// Makes a target row from source rows that are already mixed along the other axis.
void mixAcross(const std::vector<float>& source, const AxisMap& columns, std::size_t channels,
               std::vector<float>& target) {
  const auto width = static_cast<std::uint32_t>(target.size() / channels);
  for (std::uint32_t x = 0; x < width; ++x) {
    const AxisMap::Part part = columns.part(x);
    for (std::size_t channel = 0; channel < channels; ++channel) {
      float sum = 0.0f;
      for (std::uint32_t i = 0; i < part.count; ++i) {
        sum += part.weights[i] * source[(part.first + i) * channels + channel];
      }
      target[x * channels + channel] = sum;
    }
  }
}

void scaleInto(const Raster& page, Raster& result) {
  const AxisMap columns(page.width, result.width);
  const AxisMap rows(page.height, result.height);
  const std::size_t channels = page.samplesPerPixel;
  std::vector<float> sourceRow(page.width * channels);
  std::vector<float> mixed(sourceRow.size());
  std::vector<float> targetRow(result.width * channels);

  for (std::uint32_t y = 0; y < result.height; ++y) {
    const AxisMap::Part part = rows.part(y);
    std::fill(mixed.begin(), mixed.end(), 0.0f);
    for (std::uint32_t i = 0; i < part.count; ++i) {
      readRow(page, part.first + i, sourceRow);
      for (std::size_t x = 0; x < mixed.size(); ++x) mixed[x] += part.weights[i] * sourceRow[x];
    }
    mixAcross(mixed, columns, channels, targetRow);
    writeRow(targetRow, result, y);
  }
}

}  // namespace

Raster resize(Raster raster, std::int32_t width, std::int32_t height) {
  if (width < 1 || height < 1) {
    throw Failure("a page cannot be scaled to " + std::to_string(width) + " x " +
                  std::to_string(height) + " pixels");
  }
  const auto newWidth = static_cast<std::uint32_t>(width);
  const auto newHeight = static_cast<std::uint32_t>(height);
  if (newWidth == raster.width && newHeight == raster.height) return raster;

  requireRoom(raster.width, raster.height, raster.bitsPerPixel());
  const Raster page = toWorkingForm(std::move(raster));
  const RasterForm gray{8, 1, ColourModel::MinIsBlack};
  const RasterForm& pageForm = page;
  const bool shrinks = newWidth < page.width || newHeight < page.height;
  const RasterForm& form = page.bitsPerSample == 1 && shrinks ? gray : pageForm;
  requireRoom(width, height, form.bitsPerPixel());

  Raster result = emptyRaster(form, newWidth, newHeight);
  scaleInto(page, result);
  return result;
}

}  // namespace orvane
