#include "scanner.h"

#include <QPainter>
#include <algorithm>
#include <vector>

#include "noise.h"

namespace orvane::sample {
namespace {

constexpr double kColourNoise = 2.6;
constexpr double kGrayNoise = 3.0;
constexpr double kThresholdNoise = 19;  // gives the rough edges of a bilevel scanner
constexpr int kThreshold = 150;

uchar level(int value) {
  return static_cast<uchar>(std::clamp(value, 0, 255));
}

// Returns a copy of the page with dust on the glass and the shadow of the lid.
QImage onTheGlass(const QImage& page, std::uint64_t seed) {
  QImage result = page;
  Noise noise(seed + 31);
  QPainter painter(&result);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const double unit = page.width() / 2480.0;  // a pixel of a page at 300 dpi
  for (int i = 0; i < 420; ++i) {
    const int shade = static_cast<int>(noise.between(60, 190));
    painter.setBrush(QColor(shade, shade, shade));
    const double size = noise.between(0.6, 2.1) * unit;
    painter.drawEllipse(QPointF(noise.between(0, page.width()), noise.between(0, page.height())),
                        size, size * noise.between(0.6, 1.5));
  }
  painter.setBrush(QColor(30, 29, 28));
  const double height = page.height();
  painter.drawPolygon(QPolygonF({QPointF(0, 0), QPointF(noise.between(6, 26) * unit, 0),
                                 QPointF(noise.between(0, 9) * unit, height), QPointF(0, height)}));
  return result;
}

// The levels that the lamp adds to each column: slightly darker towards the edges.
std::vector<int> lamp(int width, std::uint64_t seed) {
  std::vector<int> light(static_cast<std::size_t>(width));
  for (int x = 0; x < width; ++x) {
    const double off = 2.0 * x / width - 1;
    const double streak = smoothNoise(x / 9.0, 0, 3, seed + 3) - 0.5;
    light[static_cast<std::size_t>(x)] = static_cast<int>(-7 * off * off + 4 * streak);
  }
  return light;
}

QImage grayWithNoise(const QImage& page, std::uint64_t seed, double deviation) {
  QImage scan = onTheGlass(page, seed).convertToFormat(QImage::Format_Grayscale8);
  const std::vector<int> light = lamp(scan.width(), seed);
  SensorNoise noise(seed, deviation);
  for (int y = 0; y < scan.height(); ++y) {
    uchar* line = scan.scanLine(y);
    for (int x = 0; x < scan.width(); ++x) {
      line[x] = level(line[x] + light[static_cast<std::size_t>(x)] + noise.next4()[0]);
    }
  }
  return scan;
}

}  // namespace

QImage scanColour(const QImage& page, std::uint64_t seed) {
  QImage scan = onTheGlass(page, seed).convertToFormat(QImage::Format_RGB888);
  const std::vector<int> light = lamp(scan.width(), seed);
  SensorNoise noise(seed, kColourNoise);
  for (int y = 0; y < scan.height(); ++y) {
    uchar* pixel = scan.scanLine(y);
    for (int x = 0; x < scan.width(); ++x, pixel += 3) {
      const auto [common, red, green, blue] = noise.next4();
      const int base = light[static_cast<std::size_t>(x)] + common;
      pixel[0] = level(pixel[0] + base + red / 2);
      pixel[1] = level(pixel[1] + base + green / 2);
      pixel[2] = level(pixel[2] + base + blue / 2);
    }
  }
  return scan;
}

QImage scanGray(const QImage& page, std::uint64_t seed) {
  return grayWithNoise(page, seed, kGrayNoise);
}

QImage scanBlackAndWhite(const QImage& page, std::uint64_t seed) {
  const QImage gray = grayWithNoise(page, seed, kThresholdNoise);
  QImage scan(gray.size(), QImage::Format_Mono);
  scan.fill(0);
  for (int y = 0; y < gray.height(); ++y) {
    const uchar* from = gray.constScanLine(y);
    uchar* to = scan.scanLine(y);
    for (int x = 0; x < gray.width(); ++x) {
      if (from[x] < kThreshold) to[x / 8] = static_cast<uchar>(to[x / 8] | (0x80 >> (x % 8)));
    }
  }
  return scan;
}

}  // namespace orvane::sample
