#include "imaging/operations/paper_tone.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

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

// About 4,000 tones from four lines a little inside of each edge; the outermost rows of a scan are
// often dark.
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

constexpr int kReach = 8;  // levels on either side that still are the same tone

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

}  // namespace

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

}  // namespace orvane
