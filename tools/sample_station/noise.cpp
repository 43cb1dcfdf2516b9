#include "noise.h"

#include <algorithm>
#include <cmath>

namespace orvane::sample {
namespace {

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

double latticeValue(std::int64_t x, std::int64_t y, std::uint64_t seed) {
  const auto key = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15ULL +
                   static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4FULL + seed;
  return static_cast<double>(mixed(key) >> 11) / 9007199254740992.0;
}

double eased(double t) {
  return t * t * (3 - 2 * t);
}

double latticeNoise(double x, double y, std::uint64_t seed) {
  const double left = std::floor(x);
  const double top = std::floor(y);
  const auto column = static_cast<std::int64_t>(left);
  const auto row = static_cast<std::int64_t>(top);
  const double across = eased(x - left);
  const double down = eased(y - top);
  const double upper =
      std::lerp(latticeValue(column, row, seed), latticeValue(column + 1, row, seed), across);
  const double lower = std::lerp(latticeValue(column, row + 1, seed),
                                 latticeValue(column + 1, row + 1, seed), across);
  return std::lerp(upper, lower, down);
}

}  // namespace

std::uint64_t Noise::next() {
  state_ += 0x9E3779B97F4A7C15ULL;
  return mixed(state_);
}

double Noise::between(double low, double high) {
  return low + (high - low) * static_cast<double>(next() >> 11) / 9007199254740992.0;
}

std::size_t Noise::below(std::size_t bound) {
  return static_cast<std::size_t>(next() % bound);
}

SensorNoise::SensorNoise(std::uint64_t seed, double deviation)
    : state_(static_cast<std::uint32_t>(seed) | 1U) {
  Noise source(seed);
  for (auto& value : table_) {
    double sum = 0;  // of twelve uniform values, which has variance 1
    for (int i = 0; i < 12; ++i) sum += source.between(-0.5, 0.5);
    value = static_cast<std::int8_t>(std::clamp(std::lround(sum * deviation), -127L, 127L));
  }
}

std::array<std::int8_t, 4> SensorNoise::next4() {
  state_ ^= state_ << 13;
  state_ ^= state_ >> 17;
  state_ ^= state_ << 5;
  const std::size_t first = state_ & 0xFFFU;
  const std::size_t second = (state_ >> 12) & 0xFFFU;
  return {table_[first], table_[second], table_[first ^ 0x5A5U], table_[second ^ 0xA5AU]};
}

double smoothNoise(double x, double y, int octaves, std::uint64_t seed) {
  double sum = 0;
  double weight = 0;
  double strength = 1;
  for (int octave = 0; octave < octaves; ++octave) {
    sum += strength * latticeNoise(x, y, seed + static_cast<std::uint64_t>(octave));
    weight += strength;
    strength /= 2;
    x *= 2;
    y *= 2;
  }
  return sum / weight;
}

}  // namespace orvane::sample
