#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane::sample {

// A generator of repeatable random numbers (SplitMix64). A page is the same on every machine and
// with every standard library.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next();
  // Evenly spread over [low, high).
  double between(double low, double high);
  // Evenly spread over [0, bound); bound > 0.
  std::size_t below(std::size_t bound);

 private:
  std::uint64_t state_;
};

// Sensor noise with a roughly normal distribution. It is read from a table, because a colour page
// needs 26 million values.
class SensorNoise {
 public:
  // `deviation` is the standard deviation in levels of 0 to 255.
  SensorNoise(std::uint64_t seed, double deviation);

  // The next four values.
  std::array<std::int8_t, 4> next4();

 private:
  std::array<std::int8_t, 4096> table_{};
  std::uint32_t state_;
};

// Smooth noise in [0, 1]: the sum of `octaves` layers of interpolated lattice values, each twice as
// fine and half as strong as the previous one.
double smoothNoise(double x, double y, int octaves, std::uint64_t seed);

}  // namespace orvane::sample
