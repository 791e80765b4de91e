// A group's triangles without any indices.
#pragma once

#include <array>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// A corner of a triangle with all its values: the input of a library that looks for equal ones.
struct LooseCorner {
  Point3 position;
  Point3 normal;
  std::array<float, 2> uv;
  ColourRgba colour;
};
static_assert(sizeof(LooseCorner) == 12 * sizeof(float));

inline std::vector<LooseCorner> LooseCorners(const GeometryGroup& group) {
  std::vector<LooseCorner> corners;
  corners.reserve(3 * group.faces.size());
  for (const GroupFace& face : group.faces) {
    for (std::size_t k = 0; k < 3; ++k) {
      const VertexAttribute& a = group.attributes[face.a[k]];
      corners.push_back({group.vertices[face.v[k]], a.normal, {a.uvw.x, a.uvw.y}, a.colour});
    }
  }
  return corners;
}

}  // namespace mapexport
