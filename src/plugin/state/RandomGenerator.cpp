#include "plugin/state/RandomGenerator.h"

namespace mapexport {

void RandomGenerator::Seed(std::uint32_t seed) {
  table_[0] = seed;
  for (std::size_t j = 0; j + 1 < table_.size(); ++j) {
    const std::uint32_t high = (((table_[j] >> 15) * 31) & 0x7FFF) << 15;
    const std::uint32_t low = (table_[j] & 0x7FFF) * 31;
    table_[j + 1] = (high + low + 1) & kMask;
  }
  index_ = 54;
}

std::uint32_t RandomGenerator::Draw() {
  index_ = (index_ + 1) % 55;
  table_[index_] = (table_[(index_ + 54) % 55] + table_[(index_ + 23) % 55]) & kMask;
  return table_[index_];
}

float RandomGenerator::Uniform(float lo, float hi) {
  constexpr float kScale = 9.313226e-10f;  // 2^-30
  return lo + static_cast<float>(Draw()) * kScale * (hi - lo);
}

}  // namespace mapexport
