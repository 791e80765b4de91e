// The face flags of a surface set.
#pragma once

#include <cstdint>
#include <string_view>

namespace mapexport {

struct ModelFaceFlag {
  std::uint32_t bit;
  std::string_view keyword;  ///< as in user properties; in brackets where there is none
};

inline constexpr std::uint32_t kNotRenderedFlag = 0x04;
inline constexpr std::uint32_t kAllModelFaceFlags = 0xFF;

inline constexpr ModelFaceFlag kModelFaceFlags[] = {
    {0x01, "climbable"},       {0x02, "notcollidable"}, {kNotRenderedFlag, "notrendered"},
    {0x08, "notcollidable3d"}, {0x10, "floorface"},     {0x20, "notshownplan"},
    {0x40, "45plusfloor"},     {0x80, "(static node)"},
};

}  // namespace mapexport
