// The face flags of a surface set.
#pragma once

#include <cstdint>
#include <string_view>

#include <mapexport/ModelReader.h>

namespace mapexport {

struct ModelFaceFlag {
  std::uint32_t bit;
  std::string_view keyword;  ///< as in user properties; in brackets where there is none
};

inline constexpr ModelFaceFlag kModelFaceFlags[] = {
    {reader::kClimbable, "climbable"},     {reader::kNotCollidable, "notcollidable"},
    {reader::kNotRendered, "notrendered"}, {reader::kNotCollidable3d, "notcollidable3d"},
    {reader::kFloorFace, "floorface"},     {reader::kNotShownPlan, "notshownplan"},
    {reader::k45PlusFloor, "45plusfloor"}, {reader::kStaticNode, "(static node)"},
};

}  // namespace mapexport
