#include "intake/resolution.h"

#include <cmath>

namespace orvane {
namespace {

double wholeIfNear(double dpi) {
  constexpr double kNear = 0.0005;
  const double whole = std::round(dpi);
  return std::abs(dpi - whole) <= kNear * dpi ? whole : dpi;
}

bool isCredible(double dpi) {
  constexpr double kLowest = 10;
  constexpr double kHighest = 20000;
  return dpi >= kLowest && dpi <= kHighest;
}

}  // namespace

Resolution statedResolution(double x, double y, double unitsPerInch) {
  x *= unitsPerInch;
  y *= unitsPerInch;
  if (!isCredible(x) || !isCredible(y)) return {};
  return {wholeIfNear(x), wholeIfNear(y), true};
}

}  // namespace orvane
