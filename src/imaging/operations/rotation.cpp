#include "imaging/operations/rotation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "foundation/Failure.h"
#include "imaging/operations/operations.h"
#include "imaging/operations/working_form.h"
#include "imaging/raster/orientation.h"

namespace orvane {
namespace {

// Positions in the source are fixed-point numbers: 32 bits behind the point hold the position to a
// millionth of a pixel over the longest row.
constexpr int kFractionBits = 32;

std::int64_t toFixed(double value) {
  return std::llround(value * static_cast<double>(std::int64_t{1} << kFractionBits));
}

// A position between four pixels: the upper left one, and the shares of the right column and of
// the lower row in 1/256.
struct Position {
  std::int64_t x;
  std::int64_t y;
  int right;
  int lower;

  Position(std::int64_t fixedX, std::int64_t fixedY)
      : x(fixedX >> kFractionBits),
        y(fixedY >> kFractionBits),
        right(static_cast<int>(fixedX >> (kFractionBits - 8)) & 0xFF),
        lower(static_cast<int>(fixedY >> (kFractionBits - 8)) & 0xFF) {}
};

int mixed(const std::array<int, 4>& corners, const Position& at) {
  const int upper = corners[0] * (256 - at.right) + corners[1] * at.right;
  const int lower = corners[2] * (256 - at.right) + corners[3] * at.right;
  return (upper * (256 - at.lower) + lower * at.lower + 0x8000) >> 16;
}

// The way of one target row through the source.
struct Path {
  std::int64_t x;
  std::int64_t y;
  std::int64_t stepX;
  std::int64_t stepY;

  Position next() {
    const Position here(x, y);
    x += stepX;
    y += stepY;
    return here;
  }
};

bool isInside(const Raster& page, std::int64_t x, std::int64_t y) {
  return x >= 0 && x < page.width && y >= 0 && y < page.height;
}

bool hasAllCorners(const Raster& page, const Position& at) {
  return at.x >= 0 && at.y >= 0 && at.x + 1 < page.width && at.y + 1 < page.height;
}

bool touchesPage(const Raster& page, const Position& at) {
  return at.x >= -1 && at.y >= -1 && at.x < page.width && at.y < page.height;
}

int inkAt(const Raster& page, std::int64_t x, std::int64_t y) {
  const std::uint8_t byte = page.row(static_cast<std::uint32_t>(y))[x / 8];
  return byte >> (7 - x % 8) & 1;
}

void turnRowBilevel(const Raster& page, Path path, std::uint32_t width, std::uint8_t* target) {
  const auto ink = [&](std::int64_t x, std::int64_t y) {
    return isInside(page, x, y) ? inkAt(page, x, y) * 255 : 0;
  };
  for (std::uint32_t i = 0; i < width; ++i) {
    const Position at = path.next();
    if (!touchesPage(page, at)) continue;
    const std::array<int, 4> corners{ink(at.x, at.y), ink(at.x + 1, at.y), ink(at.x, at.y + 1),
                                     ink(at.x + 1, at.y + 1)};
    if (mixed(corners, at) >= 128) target[i / 8] |= static_cast<std::uint8_t>(0x80u >> (i % 8));
  }
}

template <int kChannels>
void turnRow(const Raster& page, Path path, std::uint32_t width,
             const std::array<std::uint8_t, 3>& paper, std::uint8_t* target) {
  const auto sample = [&](std::int64_t x, std::int64_t y, int channel) -> int {
    if (!isInside(page, x, y)) return paper[static_cast<std::size_t>(channel)];
    return page.row(static_cast<std::uint32_t>(y))[x * kChannels + channel];
  };
  const std::size_t rowBytes = page.rowBytes();
  for (std::uint32_t i = 0; i < width; ++i) {
    const Position at = path.next();
    if (hasAllCorners(page, at)) {
      const std::uint8_t* upper = page.row(static_cast<std::uint32_t>(at.y)) + at.x * kChannels;
      const std::uint8_t* lower = upper + rowBytes;
      for (int c = 0; c < kChannels; ++c) {
        *target++ = static_cast<std::uint8_t>(
            mixed({upper[c], upper[c + kChannels], lower[c], lower[c + kChannels]}, at));
      }
      continue;
    }
    for (int c = 0; c < kChannels; ++c) {
      const std::array<int, 4> corners{sample(at.x, at.y, c), sample(at.x + 1, at.y, c),
                                       sample(at.x, at.y + 1, c), sample(at.x + 1, at.y + 1, c)};
      *target++ = static_cast<std::uint8_t>(mixed(corners, at));
    }
  }
}

}  // namespace

double rowsPerColumn(const Resolution& resolution) {
  constexpr double kMost = 16.0;  // keeps every position within its fixed-point number
  return std::clamp(resolution.y / resolution.x, 1.0 / kMost, kMost);
}

Raster turnOnSheet(const Raster& page, double degrees, double rowsPerColumn, std::uint32_t width,
                   std::uint32_t height) {
  requireRoom(width, height, page.bitsPerPixel());
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::cos(angle);
  const double sineX = std::sin(angle) / rowsPerColumn;
  const double sineY = std::sin(angle) * rowsPerColumn;
  const bool bilevel = page.bitsPerSample == 1;
  const auto paper = bilevel ? std::array<std::uint8_t, 3>{} : paperTone(page);

  Raster sheet = emptyRaster(page, width, height);
  for (std::uint32_t y = 0; y < height; ++y) {
    // The centre of the row's first pixel, seen from the centre of the sheet, is turned back.
    const double dx = 0.5 - width / 2.0;
    const double dy = y + 0.5 - height / 2.0;
    const Path path{toFixed(dx * cosine - dy * sineX + page.width / 2.0 - 0.5),
                    toFixed(dx * sineY + dy * cosine + page.height / 2.0 - 0.5), toFixed(cosine),
                    toFixed(sineY)};
    if (bilevel) {
      turnRowBilevel(page, path, width, sheet.row(y));
    } else if (page.samplesPerPixel == 1) {
      turnRow<1>(page, path, width, paper, sheet.row(y));
    } else {
      turnRow<3>(page, path, width, paper, sheet.row(y));
    }
  }
  return sheet;
}

namespace {

bool isQuarterTurns(double degrees) {
  return std::fmod(degrees, 90.0) == 0.0;
}

// The smallest sheet that holds a page of this size after the turn.
void sheetSize(const Raster& page, double degrees, double rowsPerColumn, double& width,
               double& height) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::abs(std::cos(angle));
  const double sine = std::abs(std::sin(angle));
  constexpr double kRoundingError = 1e-6;
  const double across = page.height * sine / rowsPerColumn;
  const double down = page.width * sine * rowsPerColumn;
  width = std::ceil(page.width * cosine + across - kRoundingError);
  height = std::ceil(down + page.height * cosine - kRoundingError);
}

void requireAngle(double degrees) {
  if (!std::isfinite(degrees)) throw Failure("the angle to turn a page by is not a number");
}

}  // namespace

Raster rotate(Raster raster, double degrees, const Resolution& resolution) {
  requireAngle(degrees);
  const double turn = std::fmod(degrees, 360.0);
  if (isQuarterTurns(turn)) {
    return rotateQuarters(std::move(raster), static_cast<int>(turn / 90.0));
  }

  const Raster page = toWorkingForm(std::move(raster));
  double width = 0.0;
  double height = 0.0;
  sheetSize(page, turn, rowsPerColumn(resolution), width, height);
  requireRoom(width, height, page.bitsPerPixel());
  return turnOnSheet(page, turn, rowsPerColumn(resolution), static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(height));
}

Resolution rotated(const Resolution& resolution, double degrees) {
  Resolution turned = resolution;
  const bool isOnItsSide = isQuarterTurns(degrees) && std::fmod(degrees, 180.0) != 0.0;
  if (isOnItsSide) std::swap(turned.x, turned.y);
  return turned;
}

Raster straighten(Raster raster, double degrees, const Resolution& resolution) {
  requireAngle(degrees);
  if (degrees == 0.0) return raster;
  const Raster page = toWorkingForm(std::move(raster));
  return turnOnSheet(page, degrees, rowsPerColumn(resolution), page.width, page.height);
}

}  // namespace orvane
