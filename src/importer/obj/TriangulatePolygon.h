// Polygons cut into triangles.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// Corners of a triangle: indices into the polygon's.
using PolygonTriangle = std::array<std::uint32_t, 3>;

/// Polygons with more corners are only cut when they are convex.
inline constexpr std::size_t kMostConcaveCorners = 4096;

/// Cuts the polygon with these corners (at least three) into triangles of the same winding, two
/// fewer than it has corners. A convex one becomes a fan around its first corner, as does one
/// without an area; from any other, ears are cut one after the other, seen along the normal of its
/// area. False, and no triangles, for a concave polygon with too many corners. Cost: linear when
/// convex, else quadratic.
bool TriangulatePolygon(std::span<const Point3> corners, std::vector<PolygonTriangle>& triangles);

}  // namespace mapexport
