#include "exporter/base/RandomGenerator.h"

namespace mapexport {

void RandomGenerator::Seed(std::uint32_t seed) {
  table_[0] = seed;
  for (std::size_t j = 0; j + 1 < table_.size(); ++j) {
    const std::uint32_t high = (((table_[j] >> 15) * 31) & 0x7FFF) << 15;
    const std::uint32_t low = (table_[j] & 0x7FFF) * 31;
    table_[j + 1] = (high + low + 1) & kMask;
  }
  index_ = kSize - 1;
}

}  // namespace mapexport
