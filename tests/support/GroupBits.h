// A geometry group as bits, to compare what two forms of a pass made of it.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Everything of the group that outlives a pass, bit by bit.
inline std::vector<std::uint32_t> BitsOf(const GeometryGroup& group) {
  std::vector<std::uint32_t> bits;
  const auto add = [&](auto value) { bits.push_back(std::bit_cast<std::uint32_t>(value)); };
  const auto addPoint = [&](const Point3& p) { add(p.x), add(p.y), add(p.z); };
  add(static_cast<std::uint32_t>(group.vertices.size()));
  for (const Point3& p : group.vertices) addPoint(p);
  add(static_cast<std::uint32_t>(group.attributes.size()));
  for (const VertexAttribute& a : group.attributes) {
    addPoint(a.normal), addPoint(a.uvw), addPoint(a.position);
    add(a.colour.r), add(a.colour.g), add(a.colour.b), add(a.colour.a);
    add(a.reserved), add(a.material);
  }
  add(static_cast<std::uint32_t>(group.faces.size()));
  for (const GroupFace& f : group.faces) {
    for (std::size_t k = 0; k < 3; ++k) add(f.v[k]), add(f.a[k]);
    addPoint(f.normal);
    add(f.smoothing), add(f.surfaceSet), add(f.material), add(f.nodeIndex);
  }
  for (const SurfaceSet& set : group.surfaceSets) {
    add(static_cast<std::uint32_t>(set.faces.size()));
    for (const std::uint32_t f : set.faces) add(f);
  }
  return bits;
}

}  // namespace mapexport
