// The keywords of user property texts, as the program knows them.
#pragma once

#include <array>
#include <string_view>

namespace mapexport {

/// The keywords that set a flag of a node's faces, in the order of their bits from the lowest, 1.
/// The exporter has a table of its own (exporter/geometry/FaceFlags.h), since the two sides share
/// nothing but host/, which knows no exporter's words; a test compares the two.
inline constexpr std::array<std::string_view, 7> kFaceKeywords{
    "climbable", "notcollidable", "notrendered", "notcollidable3d",
    "floorface", "notshownplan",  "45plusfloor"};

}  // namespace mapexport
