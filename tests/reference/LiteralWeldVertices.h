// Welding and the removal of degenerate faces by their definitions: every pair, one face at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "geometry/GeometryGroup.h"
#include "geometry/IsSliver.h"

namespace mapexport {

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
    if (IsSliver(group.vertices[v[0]], group.vertices[v[1]], group.vertices[v[2]])) {
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
