#include "imaging/operations/rotate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "foundation/Failure.h"
#include "imaging/operations/pix.h"
#include "imaging/raster/orientation.h"

namespace orvane {
namespace {

using Tone = std::array<std::uint8_t, 3>;

int brightness(const Tone& tone) {
  return (tone[0] + 2 * tone[1] + tone[2]) / 4;
}

Tone toneAt(const Raster& page, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* pixel = page.row(y) + std::size_t{x} * page.samplesPerPixel;
  if (page.samplesPerPixel == 1) return {pixel[0], pixel[0], pixel[0]};
  return {pixel[0], pixel[1], pixel[2]};
}

// About 4,000 tones from four lines near each edge; the outermost rows of a scan are often dark.
std::vector<Tone> borderTones(const Raster& page) {
  constexpr std::uint32_t kSamplesOfLine = 256;
  std::vector<Tone> tones;
  for (const std::uint32_t percent : {0u, 1u, 2u, 3u}) {
    const auto inset = [&](std::uint32_t size) {
      return static_cast<std::uint32_t>(std::uint64_t{size} * percent / 100);
    };
    const std::uint32_t left = inset(page.width);
    const std::uint32_t top = inset(page.height);
    const std::uint32_t stepX = std::max(1u, page.width / kSamplesOfLine);
    const std::uint32_t stepY = std::max(1u, page.height / kSamplesOfLine);
    for (std::uint32_t x = left; x < page.width - left; x += stepX) {
      tones.push_back(toneAt(page, x, top));
      tones.push_back(toneAt(page, x, page.height - 1 - top));
    }
    for (std::uint32_t y = top; y < page.height - top; y += stepY) {
      tones.push_back(toneAt(page, left, y));
      tones.push_back(toneAt(page, page.width - 1 - left, y));
    }
  }
  return tones;
}

constexpr int kReach = 8;  // levels to either side that count as the same tone

// The level at the peak of the brightest hill that holds a fifth of the tones, or -1.
int brightestCommonLevel(const std::vector<Tone>& tones) {
  std::array<std::size_t, 256 + 2 * kReach> histogram{};
  for (const Tone& tone : tones) ++histogram[static_cast<std::size_t>(brightness(tone) + kReach)];
  const auto around = [&](int level) {
    std::size_t sum = 0;
    for (int i = level; i <= level + 2 * kReach; ++i) sum += histogram[static_cast<std::size_t>(i)];
    return sum;
  };

  int level = 255;
  while (level >= 0 && around(level) * 5 < tones.size()) --level;
  while (level > 0 && around(level - 1) > around(level)) --level;
  return level;
}

// The tone of the paper of an 8-bit gray or RGB page: the brightest tone that is common along the
// border. White when none is common.
Tone paperTone(const Raster& page) {
  const std::vector<Tone> tones = borderTones(page);
  const int level = brightestCommonLevel(tones);
  if (level < 0) return {255, 255, 255};

  std::array<std::size_t, 3> sums{};
  std::size_t count = 0;
  for (const Tone& tone : tones) {
    if (std::abs(brightness(tone) - level) > kReach) continue;
    for (std::size_t i = 0; i < 3; ++i) sums[i] += tone[i];
    ++count;
  }
  Tone mean{};
  for (std::size_t i = 0; i < 3; ++i) {
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): the hill holds a fifth of the tones
    mean[i] = static_cast<std::uint8_t>((sums[i] + count / 2) / count);
  }
  return mean;
}

struct Size {
  double width;
  double height;
};

// The coefficients by which Leptonica finds the source pixel of a target pixel:
// (c[0] x + c[1] y + c[2], c[3] x + c[4] y + c[5]).
using Coefficients = std::array<l_float32, 6>;

// Turns the centre of `sheet`, which begins at (0, 0), to the centre of `page`, which begins at
// (1, 1).
Coefficients turnBack(double degrees, double rowsPerColumn, const Size& page, const Size& sheet) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::cos(angle);
  const double sineX = std::sin(angle) / rowsPerColumn;
  const double sineY = std::sin(angle) * rowsPerColumn;
  // Leptonica cuts positions to 1/16 of a pixel; half of that makes it round them.
  constexpr double kRounding = 1.0 / 32;
  const double dx = (1.0 - sheet.width) / 2.0, dy = (1.0 - sheet.height) / 2.0;
  const double x = (page.width + 1.0) / 2.0 + dx * cosine - dy * sineX + kRounding;
  const double y = (page.height + 1.0) / 2.0 + dx * sineY + dy * cosine + kRounding;
  const auto single = [](double value) { return static_cast<l_float32>(value); };
  return {single(cosine), single(-sineX), single(x), single(sineY), single(cosine), single(y)};
}

// Turns a page in working form about its centre onto a sheet with the same centre. A 1-bit page is
// turned in gray and cut at half coverage.
Raster turnOnSheet(const Raster& page, double degrees, double rowsPerColumn, const Size& sheet) {
  const bool bilevel = page.bitsPerSample == 1, colour = page.samplesPerPixel == 3;
  // Leptonica's result is as large as its source. The pixel of paper around the page lets its
  // outermost pixels blend into the paper.
  const double width = std::max(page.width + 2.0, sheet.width);
  const double height = std::max(page.height + 2.0, sheet.height);
  requireRoom(width, height, colour ? 32 : 8);
  const Tone paper = bilevel ? Tone{255, 255, 255} : paperTone(page);
  const l_uint32 fill = static_cast<l_uint32>(paper[0]) << L_RED_SHIFT |
                        static_cast<l_uint32>(paper[1]) << L_GREEN_SHIFT |
                        static_cast<l_uint32>(paper[2]) << L_BLUE_SHIFT;

  PixHandle source = toPix(page);
  if (bilevel) {
    source = checkedPix(pixConvert1To8(nullptr, source.get(), 255, 0), "pixConvert1To8");
  }
  const auto borderTo = [](double size, std::uint32_t pageSize) {
    return static_cast<l_int32>(size) - 1 - static_cast<l_int32>(pageSize);
  };
  source = checkedPix(pixAddBorderGeneral(source.get(), 1, borderTo(width, page.width), 1,
                                          borderTo(height, page.height), colour ? fill : paper[0]),
                      "pixAddBorderGeneral");

  Coefficients back =
      turnBack(degrees, rowsPerColumn,
               {static_cast<double>(page.width), static_cast<double>(page.height)}, sheet);
  PixHandle turned =
      colour ? checkedPix(pixAffineColor(source.get(), back.data(), fill), "pixAffineColor")
             : checkedPix(pixAffineGray(source.get(), back.data(), paper[0]), "pixAffineGray");
  source.reset();
  turned =
      checkedPix(pixRemoveBorderGeneral(turned.get(), 0, static_cast<l_int32>(width - sheet.width),
                                        0, static_cast<l_int32>(height - sheet.height)),
                 "pixRemoveBorderGeneral");
  if (bilevel) {
    turned = checkedPix(pixThresholdToBinary(turned.get(), 128), "pixThresholdToBinary");
  }
  return toRaster(turned);
}

bool isQuarterTurns(double degrees) {
  return std::fmod(degrees, 90.0) == 0.0;
}

// The smallest sheet that holds a page of this size after the turn.
Size sheetFor(const Raster& page, double degrees, double rowsPerColumn) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::abs(std::cos(angle));
  const double sine = std::abs(std::sin(angle));
  constexpr double kRoundingError = 1e-6;
  const double across = page.height * sine / rowsPerColumn;
  const double down = page.width * sine * rowsPerColumn;
  return {std::ceil(page.width * cosine + across - kRoundingError),
          std::ceil(down + page.height * cosine - kRoundingError)};
}

void requireAngle(double degrees) {
  if (!std::isfinite(degrees)) throw Failure("the angle to turn a page by is not a number");
}

}  // namespace

double rowsPerColumn(const Resolution& resolution) {
  constexpr double kMost = 16.0;
  return std::clamp(resolution.y / resolution.x, 1.0 / kMost, kMost);
}

Raster rotate(Raster raster, double degrees, const Resolution& resolution) {
  requireAngle(degrees);
  const double turn = std::fmod(degrees, 360.0);
  if (isQuarterTurns(turn)) {
    return rotateQuarters(std::move(raster), static_cast<int>(turn / 90.0));
  }
  const Raster page = toWorkingForm(std::move(raster));
  const double rows = rowsPerColumn(resolution);
  return turnOnSheet(page, turn, rows, sheetFor(page, turn, rows));
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
  return turnOnSheet(page, degrees, rowsPerColumn(resolution),
                     {static_cast<double>(page.width), static_cast<double>(page.height)});
}

}  // namespace orvane
