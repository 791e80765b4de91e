// Finds the vertices that others are welded into.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// Per vertex the largest index below its own of a vertex near it; its own index when there is
/// none. Two vertices are near each other when their squared distance, computed in 32-bit floats,
/// is less than `squaredDistance`, which is positive. Coordinates that are not finite are near
/// nothing. Takes time linear in the vertices, wherever they are. Literal form: the comparison of
/// all pairs in tests/reference/LiteralWeldVertices.h.
std::vector<std::uint32_t> FindWeldTargets(std::span<const Point3> vertices, float squaredDistance);

}  // namespace mapexport
