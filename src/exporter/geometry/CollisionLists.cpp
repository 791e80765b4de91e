#include "exporter/geometry/CollisionLists.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "exporter/geometry/FaceFlags.h"

namespace mapexport {

void PrepareCollisionLists(GeometryGroup& group) {
  std::vector<std::uint32_t> uses(group.vertices.size(), 0);  // corners of drawn faces
  std::vector<bool> isPoint(group.vertices.size(), false);    // some undrawn face uses the vertex
  for (const GroupFace& face : group.faces) {
    for (const std::uint32_t v : face.v) ++uses[v];
  }
  std::size_t undrawn = 0;
  for (const SurfaceSet& set : group.surfaceSets) {
    if ((set.flags & kFlagNotRendered) == 0) continue;
    for (const std::uint32_t f : set.faces) {
      GroupFace& face = group.faces[f];
      face.drawn = 0;
      face.batchIndex = -1;
      ++undrawn;
      for (const std::uint32_t v : face.v) {
        --uses[v];
        isPoint[v] = true;
      }
    }
  }
  if (undrawn == 0 && std::ranges::find(uses, 0u) == uses.end()) return;

  std::vector<std::uint32_t> pointOf(uses.size());
  for (std::size_t v = 0; v < uses.size(); ++v) {
    if (!isPoint[v]) continue;
    pointOf[v] = static_cast<std::uint32_t>(group.collisionPoints.size());
    group.collisionPoints.push_back(group.vertices[v]);
  }
  std::vector<std::uint32_t> compacted(uses.size());
  std::uint32_t kept = 0;
  for (std::size_t v = 0; v < uses.size(); ++v) {
    if (uses[v] == 0) continue;
    compacted[v] = kept;
    group.vertices[kept] = group.vertices[v];
    ++kept;
  }
  group.vertices.Shrink(kept);
  group.collisionPlanes.reserve(undrawn);
  for (GroupFace& face : group.faces) {
    const std::vector<std::uint32_t>& newIndex = face.drawn != 0 ? compacted : pointOf;
    for (std::uint32_t& v : face.v) v = newIndex[v];
    if (face.drawn != 0) continue;
    group.collisionPlanes.push_back(PlaneOf(face.normal, group.collisionPoints[face.v[0]]));
  }
}

void MergeCollisionLists(GeometryGroup& group) {
  if (group.collisionPoints.empty()) return;  // nothing was separated
  const auto firstPoint = static_cast<std::uint32_t>(group.vertices.size());
  group.vertices.Reserve(group.vertices.size() + group.collisionPoints.size());
  for (const Point3& point : group.collisionPoints) group.vertices.Append(point);
  for (GroupFace& face : group.faces) {
    if (face.drawn != 0) continue;
    for (std::uint32_t& v : face.v) v += firstPoint;
    face.drawn = 1;
  }
  group.collisionPoints.clear();
  group.collisionPlanes.clear();
}

}  // namespace mapexport
