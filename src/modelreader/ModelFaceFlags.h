// The face flags of a surface set.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include <mapexport/ModelReader.h>

#include "system/FaceKeywords.h"

namespace mapexport {

struct ModelFaceFlag {
  std::uint32_t bit;
  std::string_view keyword;  ///< as in user properties; in brackets where there is none
};

/// The flag that each keyword sets, by their bits from the lowest, and the one that none sets.
inline constexpr auto kModelFaceFlags = [] {
  std::array<ModelFaceFlag, kFaceKeywords.size() + 1> flags{};
  for (std::uint32_t i = 0; i < kFaceKeywords.size(); ++i) flags[i] = {1U << i, kFaceKeywords[i]};
  flags.back() = {reader::kStaticNode, "(static node)"};
  return flags;
}();
static_assert(kModelFaceFlags.front().bit == reader::kClimbable);
static_assert(kModelFaceFlags[kFaceKeywords.size() - 1].bit == reader::k45PlusFloor);

}  // namespace mapexport
