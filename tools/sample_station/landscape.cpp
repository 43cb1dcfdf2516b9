#include "landscape.h"

#include <QColor>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "noise.h"

namespace orvane::sample {
namespace {

constexpr double kShore = 0.70;  // the upper edge of the water, as a fraction of the height

struct Tone {
  double red;
  double green;
  double blue;
};

Tone mix(Tone a, Tone b, double t) {
  return {std::lerp(a.red, b.red, t), std::lerp(a.green, b.green, t), std::lerp(a.blue, b.blue, t)};
}

struct Ridge {
  double height;     // of the crest, as a fraction of the height of the picture
  double roughness;  // the vertical range of the crest
  double detail;
  Tone colour;
};

constexpr std::array kRidges{Ridge{0.40, 0.22, 4, {150, 166, 184}},
                             Ridge{0.50, 0.20, 6, {104, 126, 134}},
                             Ridge{0.60, 0.16, 9, {66, 88, 74}}};

double crest(const Ridge& ridge, double x, std::uint64_t seed) {
  const double swing = smoothNoise(x * ridge.detail, ridge.detail, 6, seed) - 0.5;
  return ridge.height + swing * ridge.roughness;
}

Tone skyAt(double x, double y, std::uint64_t seed) {
  const Tone clear = mix({96, 140, 190}, {222, 222, 210}, std::clamp(y / 0.5, 0.0, 1.0));
  const double cloud = smoothNoise(x * 4, y * 11, 6, seed + 77);
  return mix(clear, {246, 244, 240}, std::clamp((cloud - 0.48) * 4, 0.0, 1.0));
}

Tone sceneAt(double x, double y, const std::array<double, kRidges.size()>& crests,
             std::uint64_t seed) {
  for (std::size_t i = kRidges.size(); i-- > 0;) {
    if (y < crests[i]) continue;
    const double leaves = smoothNoise(x * 90, y * 90, 3, seed + i) - 0.5;
    const double haze = std::clamp((y - crests[i]) * 2.5, 0.0, 0.5);
    Tone tone = mix(kRidges[i].colour, {206, 212, 212}, haze * 0.6);
    const double contrast = 18.0 + 14.0 * static_cast<double>(i);
    return {tone.red + leaves * contrast, tone.green + leaves * contrast,
            tone.blue + leaves * contrast};
  }
  return skyAt(x, y, seed);
}

Tone toneAt(double x, double y, const std::array<double, kRidges.size()>& crests,
            std::uint64_t seed) {
  if (y < kShore) return sceneAt(x, y, crests, seed);
  const double ripple = smoothNoise(x * 14, y * 120, 3, seed + 5) - 0.5;
  const double mirrored = kShore - (y - kShore) * 1.4 + ripple * 0.03;
  const Tone water = sceneAt(x + ripple * 0.01, mirrored, crests, seed);
  return mix(water, {58, 84, 96}, 0.35 + ripple * 0.3);
}

int level(double value) {
  return static_cast<int>(std::clamp(value, 0.0, 255.0));
}

}  // namespace

QImage landscape(QSize pixels, std::uint64_t seed) {
  QImage picture(pixels, QImage::Format_RGB32);
  std::vector<std::array<double, kRidges.size()>> crests(static_cast<std::size_t>(pixels.width()));
  const double width = pixels.width();
  for (int x = 0; x < pixels.width(); ++x) {
    for (std::size_t i = 0; i < kRidges.size(); ++i) {
      crests[static_cast<std::size_t>(x)][i] = crest(kRidges[i], x / width, seed + 100 * i);
    }
  }
  for (int row = 0; row < pixels.height(); ++row) {
    auto* line = reinterpret_cast<QRgb*>(picture.scanLine(row));
    const double y = static_cast<double>(row) / pixels.height();
    for (int x = 0; x < pixels.width(); ++x) {
      const Tone tone = toneAt(x / width, y, crests[static_cast<std::size_t>(x)], seed);
      line[x] = qRgb(level(tone.red), level(tone.green), level(tone.blue));
    }
  }
  return picture;
}

}  // namespace orvane::sample
