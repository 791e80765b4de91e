// Separates the collision-only faces of a group from the drawn ones.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// The plane of a face through `p0`: its stored normal, and d = -(n.y * p0.y + n.z * p0.z + n.x *
/// p0.x).
inline CollisionPlane PlaneOf(const Point3& normal, const Point3& p0) {
  return {normal, -(normal.y * p0.y + normal.z * p0.z + normal.x * p0.x)};
}

/// Turns the faces of "notrendered" surface sets into collision-only faces and drops every vertex
/// that no drawn face uses. Undrawn faces then have no batch and index `group.collisionPoints`,
/// each has its plane in `group.collisionPlanes` in face order, and drawn faces index the compacted
/// vertices. A vertex that both kinds use is in both lists. With nothing to separate and no unused
/// vertex, nothing changes.
void PrepareCollisionLists(GeometryGroup& group);

/// Takes an earlier preparation back: every face is drawn, the collision points follow the
/// vertices, and both collision lists are empty. Preparing again then gives the same lists again.
void MergeCollisionLists(GeometryGroup& group);

}  // namespace mapexport
