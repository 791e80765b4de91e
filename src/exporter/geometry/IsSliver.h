// The test for triangles that are hardly more than a line.
#pragma once

#include "host/Point3.h"

namespace mapexport {

/// An edge up to this length counts as a point.
inline constexpr float kZeroEdgeLength = 0.0001f;

/// Squared distance, in output units, from which a corner is far enough from the opposite edge.
inline constexpr float kSliverDistanceSquared = 0.1f;

/// Whether `c` lies closer than sqrt(0.1) to the straight line through `a` and `b`, or to `a` when
/// the two coincide. Only this corner is tested: the order of the corners matters. Literal form:
/// LiteralIsSliver in tests/reference/LiteralWeldVertices.h.
inline bool IsSliver(const Point3& a, const Point3& b, const Point3& c) {
  const Point3 edge = b - a;
  const Point3 direction = Normalize(edge);
  const float length = DotProd(edge, direction);
  Point3 foot = a;
  // A NaN length counts as a long edge.
  if (!(length >= -kZeroEdgeLength && length <= kZeroEdgeLength)) {
    const float t = (DotProd(direction, c) - DotProd(direction, a)) / length;
    foot = a + edge * t;
  }
  const Point3 offset = c - foot;
  return DotProd(offset, offset) < kSliverDistanceSquared;
}

}  // namespace mapexport
