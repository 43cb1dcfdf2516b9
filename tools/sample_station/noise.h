#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane::sample {

// A small generator of repeatable random numbers (SplitMix64), so that a page comes out the same
// on every machine and with every standard library.
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

// Sensor noise, roughly normal, read from a table: a colour page asks for it 26 million times.
class SensorNoise {
 public:
  // `deviation` is the standard deviation in levels of 0 to 255.
  SensorNoise(std::uint64_t seed, double deviation);

  // Four values, packed as signed bytes, a draw.
  std::array<std::int8_t, 4> next4();

 private:
  std::array<std::int8_t, 4096> table_{};
  std::uint32_t state_;
};

// Smooth noise in [0, 1]: a sum of `octaves` layers of interpolated lattice values, each twice as
// fine and half as strong as the one before.
double smoothNoise(double x, double y, int octaves, std::uint64_t seed);

}  // namespace orvane::sample
