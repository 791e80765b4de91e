#include "geometry/CollisionLists.h"

#include <algorithm>

#include "geometry/FaceFlags.h"

namespace mapexport {
namespace {

/// What becomes of each vertex.
struct VertexFate {
  std::uint32_t uses = 0;       ///< corners of drawn faces
  bool collision = false;       ///< some undrawn face uses it
  std::uint32_t point = 0;      ///< index among the collision points
  std::uint32_t compacted = 0;  ///< index among the kept vertices
};

}  // namespace

void PrepareCollisionLists(GeometryGroup& group) {
  std::vector<VertexFate> fates(group.vertices.size());
  for (const GroupFace& face : group.faces) {
    for (const std::uint32_t v : face.v) ++fates[v].uses;
  }
  std::size_t undrawn = 0;
  for (const SurfaceSet& set : group.surfaceSets) {
    if ((set.flags & kFlagNotRendered) == 0) continue;
    for (const std::uint32_t f : set.faces) {
      group.faces[f].drawn = 0;
      ++undrawn;
      for (const std::uint32_t v : group.faces[f].v) {
        --fates[v].uses;
        fates[v].collision = true;
      }
    }
  }
  const bool unused =
      std::ranges::any_of(fates, [](const VertexFate& fate) { return fate.uses == 0; });
  if (undrawn == 0 && !unused) return;

  for (std::size_t v = 0; v < fates.size(); ++v) {
    if (!fates[v].collision) continue;
    fates[v].point = static_cast<std::uint32_t>(group.collisionPoints.size());
    group.collisionPoints.push_back(group.vertices[v]);
  }
  group.collisionPlanes.reserve(undrawn);
  for (const GroupFace& face : group.faces) {
    if (face.drawn == 0) {
      group.collisionPlanes.push_back(PlaneOf(face.normal, group.vertices[face.v[0]]));
    }
  }
  std::uint32_t kept = 0;
  for (std::size_t v = 0; v < fates.size(); ++v) {
    if (fates[v].uses == 0) continue;
    fates[v].compacted = kept;
    group.vertices[kept] = group.vertices[v];
    ++kept;
  }
  group.vertices.Shrink(kept);
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& v : face.v) v = face.drawn != 0 ? fates[v].compacted : fates[v].point;
  }
}

void MergeCollisionLists(GeometryGroup& group) {
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
