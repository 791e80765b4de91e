// The random numbers that place faces in voxels.
#pragma once

#include <array>
#include <cstdint>

namespace mapexport {

/// An additive lagged Fibonacci generator (lags 1 and 32, 30 bits) whose table a linear
/// congruential sequence fills.
class RandomGenerator {
 public:
  explicit RandomGenerator(std::uint32_t seed) { Seed(seed); }

  /// Starts the sequence that belongs to `seed`.
  void Seed(std::uint32_t seed) {
    table_[0] = seed;
    for (std::size_t j = 0; j + 1 < table_.size(); ++j) {
      const std::uint32_t high = (((table_[j] >> 15) * 31) & 0x7FFF) << 15;
      const std::uint32_t low = (table_[j] & 0x7FFF) * 31;
      table_[j + 1] = (high + low + 1) & kMask;
    }
    index_ = kSize - 1;
  }

  /// The next value, 0 to 2^30 - 1.
  std::uint32_t Draw() {
    const std::uint32_t former = index_;
    index_ = former == kSize - 1 ? 0 : former + 1;
    const std::uint32_t other = index_ + kLag < kSize ? index_ + kLag : index_ + kLag - kSize;
    table_[index_] = (table_[former] + table_[other]) & kMask;
    return table_[index_];
  }

  /// lo + u * (hi - lo), u being the next draw times 2^-30; `lo` is the smaller bound. The
  /// arithmetic is 32-bit, so that the largest draws give `hi` itself.
  float Uniform(float lo, float hi) {
    constexpr float kScale = 9.313226e-10f;  // 2^-30
    return lo + static_cast<float>(Draw()) * kScale * (hi - lo);
  }

 private:
  static constexpr std::uint32_t kMask = 0x3FFFFFFF;
  static constexpr std::uint32_t kSize = 55;
  static constexpr std::uint32_t kLag = 23;  // places ahead in the ring, which is 32 draws back
  std::array<std::uint32_t, kSize> table_{};
  std::uint32_t index_ = 0;
};

}  // namespace mapexport
