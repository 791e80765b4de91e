// What most tests use of the standard library and of GoogleTest.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/TempFolder.h"

namespace mapexport {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

/// The number that the seeds of random tests begin at: 0, or others for a long run of them.
inline unsigned FirstSeed() {
  const char* first = std::getenv("MAPEXPORT_FIRST_SEED");
  return first == nullptr ? 0 : static_cast<unsigned>(std::stoul(first));
}

/// `count` seeds of random tests.
inline std::vector<unsigned> Seeds(unsigned count) {
  std::vector<unsigned> seeds(count);
  std::iota(seeds.begin(), seeds.end(), FirstSeed());
  return seeds;
}

}  // namespace mapexport
