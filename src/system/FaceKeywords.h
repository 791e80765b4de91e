// The keywords of user property texts, as the program knows them.
#pragma once

#include <array>
#include <string_view>

namespace mapexport {

/// The keywords that set a flag of a node's faces, in the order of their bits from the lowest, 1.
/// The exporter has a separate table (exporter/geometry/FaceFlags.h), because the two sides share
/// only host/. A test compares the tables.
inline constexpr std::array<std::string_view, 7> kFaceKeywords{
    "climbable", "notcollidable", "notrendered", "notcollidable3d",
    "floorface", "notshownplan",  "45plusfloor"};

}  // namespace mapexport
