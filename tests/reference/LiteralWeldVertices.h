// Welding and the removal of degenerate faces by their definitions: every pair, one face at a time.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

inline bool LiteralIsSliver(const Point3& a, const Point3& b, const Point3& c) {
  const float ex = b.x - a.x;
  const float ey = b.y - a.y;
  const float ez = b.z - a.z;
  const float length = std::sqrt(ex * ex + ey * ey + ez * ez);
  const Point3 u = length == 0.0f ? Point3() : Point3{ex / length, ey / length, ez / length};
  const float den = ex * u.x + ey * u.y + ez * u.z;
  Point3 foot = a;
  if (!(-0.0001f <= den && den <= 0.0001f)) {
    const float t =
        ((u.x * c.x + u.y * c.y + u.z * c.z) - (u.x * a.x + u.y * a.y + u.z * a.z)) / den;
    foot = {a.x + t * ex, a.y + t * ey, a.z + t * ez};
  }
  const float dx = c.x - foot.x;
  const float dy = c.y - foot.y;
  const float dz = c.z - foot.z;
  return dx * dx + dy * dy + dz * dz < 0.1f;
}

inline void LiteralWeldVertices(GeometryGroup& group, float distance) {
  const std::size_t count = group.vertices.size();
  const float squaredDistance = distance * distance;
  std::vector<std::uint32_t> rep(count);
  std::iota(rep.begin(), rep.end(), 0u);
  for (std::size_t i = 0; i + 1 < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j) {
      const Point3 d = group.vertices[i] - group.vertices[j];
      if (d.x * d.x + d.y * d.y + d.z * d.z < squaredDistance) rep[j] = rep[i];
    }
  }
  GrowableArray<Point3> survivors;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (rep[i] == i) {
      rep[i] = static_cast<std::uint32_t>(survivors.size());
      survivors.Append(group.vertices[i]);
    } else {
      rep[i] = rep[rep[i]];
    }
  }
  group.vertices = survivors;
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& v : face.v) v = rep[v];
  }
  for (std::uint32_t f = 0; f < group.faces.size();) {
    const auto& v = group.faces[f].v;
    if (LiteralIsSliver(group.vertices[v[0]], group.vertices[v[1]], group.vertices[v[2]])) {
      RemoveFace(group, f);
    } else {
      ++f;
    }
  }
}

inline void LiteralRemoveDegenerateFaces(GeometryGroup& group) {
  for (std::uint32_t f = 0; f < group.faces.size();) {
    const auto& v = group.faces[f].v;
    if (v[0] == v[1] || v[0] == v[2] || v[1] == v[2]) {
      RemoveFace(group, f);
    } else {
      ++f;
    }
  }
}

}  // namespace mapexport
