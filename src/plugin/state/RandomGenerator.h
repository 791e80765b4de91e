// The random numbers that place faces in voxels.
#pragma once

#include <array>
#include <cstdint>

namespace mapexport {

/// An additive lagged Fibonacci generator (lags 24 and 55, 30 bits) whose table a linear
/// congruential sequence fills.
class RandomGenerator {
 public:
  explicit RandomGenerator(std::uint32_t seed) { Seed(seed); }

  /// Starts the sequence that belongs to `seed`.
  void Seed(std::uint32_t seed);

  /// The next value, 0 to 2^30 - 1.
  std::uint32_t Draw();

  /// lo + u * (hi - lo), u being the next draw times 2^-30; `lo` is the smaller bound. The
  /// arithmetic is 32-bit, so that the largest draws give `hi` itself.
  float Uniform(float lo, float hi);

 private:
  static constexpr std::uint32_t kMask = 0x3FFFFFFF;
  std::array<std::uint32_t, 55> table_{};
  std::uint32_t index_ = 0;
};

}  // namespace mapexport
