#include "exporter/geometry/WeldVertices.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "exporter/geometry/FindWeldTargets.h"
#include "exporter/geometry/IsSliver.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/RemoveFaces.h"

namespace mapexport {
namespace {

/// The new index of every vertex, after moving those that survive down in `vertices`.
std::vector<std::uint32_t> MergeVertices(GrowableArray<Point3>& vertices, float squaredDistance) {
  std::vector<std::uint32_t> newIndex =
      FindWeldTargets({vertices.data(), vertices.size()}, squaredDistance);
  std::uint32_t survivors = 0;
  for (std::uint32_t i = 0; i < newIndex.size(); ++i) {
    if (newIndex[i] == i) {
      vertices[survivors] = vertices[i];
      newIndex[i] = survivors++;
    } else {
      newIndex[i] = newIndex[newIndex[i]];
    }
  }
  vertices.Shrink(survivors);
  return newIndex;
}

/// Gives the faces their new vertices, and removes those that are slivers then. Returns whether
/// others are degenerate.
template <typename NewIndex>
bool RenumberFaces(GeometryGroup& group, const NewIndex& newIndex) {
  std::vector<bool> sliver;
  sliver.reserve(group.faces.size());
  bool anyDegenerate = false;
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& v : face.v) v = newIndex(v);
    sliver.push_back(
        IsSliver(group.vertices[face.v[0]], group.vertices[face.v[1]], group.vertices[face.v[2]]));
    anyDegenerate |= IsDegenerate(face) && !sliver.back();
  }
  RemoveFaces(group, sliver);
  return anyDegenerate;
}

}  // namespace

bool WeldVertices(GeometryGroup& group, float distance) {
  const float squaredDistance = distance * distance;
  // No squared length is less than 0, or than what is no number.
  if (squaredDistance > 0.0f) {
    const std::vector<std::uint32_t> newIndex = MergeVertices(group.vertices, squaredDistance);
    return RenumberFaces(group, [&](std::uint32_t v) { return newIndex[v]; });
  }
  return RenumberFaces(group, [](std::uint32_t v) { return v; });
}

}  // namespace mapexport
