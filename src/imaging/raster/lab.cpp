#include "imaging/raster/lab.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {
namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

Vector operator*(const Matrix& matrix, const Vector& vector) {
  Vector product{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) product[i] += matrix[i][k] * vector[k];
  }
  return product;
}

Matrix operator*(const Matrix& left, const Matrix& right) {
  Matrix product{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) product[i][j] += left[i][k] * right[k][j];
    }
  }
  return product;
}

Matrix diagonal(const Vector& values) {
  Matrix matrix{};
  for (std::size_t i = 0; i < 3; ++i) matrix[i][i] = values[i];
  return matrix;
}

constexpr Chromaticity kD65{0.3127, 0.3290};

constexpr Matrix kBradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
constexpr Matrix kFromBradford{{{0.9869929, -0.1470543, 0.1599627},
                                {0.4323053, 0.5183603, 0.0492912},
                                {-0.0085287, 0.0400428, 0.9684867}}};
constexpr Matrix kXyzToLinearRgb{{{3.2404542, -1.5371385, -0.4985314},
                                  {-0.9692660, 1.8760108, 0.0415560},
                                  {0.0556434, -0.2040259, 1.0572252}}};

Vector xyzOf(const Chromaticity& white) {
  return {white.x / white.y, 1, (1 - white.x - white.y) / white.y};
}

bool isWhite(const Chromaticity& light) {
  const auto isNear = [](double value) { return value > 0.2 && value < 0.6; };
  return isNear(light.x) && isNear(light.y);  // false for a NaN
}

// From X / Xn, Y / Yn and Z / Zn to linear RGB.
Matrix toLinearRgb(const Chromaticity& white) {
  const Vector from = xyzOf(white);
  const Vector source = kBradford * from, target = kBradford * xyzOf(kD65);
  Vector gains{};
  for (std::size_t i = 0; i < 3; ++i) gains[i] = target[i] / source[i];
  return kXyzToLinearRgb * kFromBradford * diagonal(gains) * kBradford * diagonal(from);
}

// The inverse of the function of CIE 15 section 8.2.1.
double cubed(double value) {
  constexpr double kKnee = 6.0 / 29;
  return value > kKnee ? value * value * value : 3 * kKnee * kKnee * (value - 4.0 / 29);
}

/// The curve of sRGB as a table, whose steps are finer than those of its 8-bit codes everywhere.
class RgbCurve {
 public:
  RgbCurve() {
    for (std::size_t i = 0; i < kSteps; ++i) {
      const double light = (static_cast<double>(i) + 0.5) / kSteps;
      const double code =
          light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
      codes_[i] = static_cast<std::uint8_t>(std::lround(code * 255));
    }
  }

  std::uint8_t code(double light) const {
    const double step = std::clamp(light * kSteps, 0.0, kSteps - 1.0);
    return codes_[static_cast<std::size_t>(step)];
  }

 private:
  static constexpr std::size_t kSteps = 16384;
  std::array<std::uint8_t, kSteps> codes_{};
};

struct Lab {
  double l, a, b;
};

Lab decoded(const std::uint8_t* code, LabCoding coding) {
  if (coding == LabCoding::Icc) return {code[0] / 2.55, code[1] - 128.0, code[2] - 128.0};
  return {code[0] / 2.55, 1.0 * static_cast<std::int8_t>(code[1]),
          1.0 * static_cast<std::int8_t>(code[2])};
}

Lab decoded(const std::uint16_t* code, LabCoding coding) {
  if (coding == LabCoding::Icc) {
    return {std::min(100.0, code[0] / 652.8), code[1] / 256.0 - 128, code[2] / 256.0 - 128};
  }
  return {code[0] / 655.35, static_cast<std::int16_t>(code[1]) / 256.0,
          static_cast<std::int16_t>(code[2]) / 256.0};
}

template <typename Code>
void convert(const Raster& lab, LabCoding coding, const Matrix& toRgb, Raster& rgb) {
  static const RgbCurve curve;
  for (std::uint32_t y = 0; y < lab.height; ++y) {
    const auto* from = reinterpret_cast<const Code*>(lab.row(y));
    std::uint8_t* to = rgb.row(y);
    for (std::uint32_t x = 0; x < lab.width; ++x, from += 3, to += 3) {
      const Lab colour = decoded(from, coding);
      const double light = (colour.l + 16) / 116;
      const Vector linear = toRgb * Vector{cubed(light + colour.a / 500), cubed(light),
                                           cubed(light - colour.b / 200)};
      for (std::size_t i = 0; i < 3; ++i) to[i] = curve.code(linear[i]);
    }
  }
}

}  // namespace

Raster labToRgb(const Raster& lab, LabCoding coding, Chromaticity white) {
  const RasterForm form{.bitsPerSample = 8, .samplesPerPixel = 3, .model = ColourModel::Rgb};
  Raster rgb = emptyRaster(form, lab.width, lab.height);
  const Matrix toRgb = toLinearRgb(isWhite(white) ? white : kD50);
  const auto convertAll = lab.bitsPerSample == 16 ? convert<std::uint16_t> : convert<std::uint8_t>;
  convertAll(lab, coding, toRgb, rgb);
  return rgb;
}

}  // namespace orvane
