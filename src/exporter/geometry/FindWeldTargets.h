// Finds the vertices that others are welded into.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// For each vertex the largest index below its own of a vertex that is near it, its own index when
/// there is none. Two are near each other when their squared distance, computed in 32-bit floats,
/// is less than `squaredDistance`, which is positive. Coordinates that are not finite are near
/// nothing. Takes time linear in the vertices, however they lie.
std::vector<std::uint32_t> FindWeldTargets(std::span<const Point3> vertices, float squaredDistance);

}  // namespace mapexport
