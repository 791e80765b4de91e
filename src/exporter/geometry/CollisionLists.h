// Separates the collision-only faces of a group from the drawn ones.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// The plane of a face through `p0`: its stored normal, and d = -(n.y * p0.y + n.z * p0.z + n.x *
/// p0.x).
inline CollisionPlane PlaneOf(const Point3& normal, const Point3& p0) {
  return {normal, -(normal.y * p0.y + normal.z * p0.z + normal.x * p0.x)};
}

/// Turns the faces of "notrendered" surface sets into collision-only faces and removes every vertex
/// that no drawn face uses. Undrawn faces then have no batch, index `group.collisionPoints`, and
/// each has a plane in `group.collisionPlanes`, in face order. Drawn faces index the remaining
/// vertices. A vertex that both kinds use is in both lists.
void PrepareCollisionLists(GeometryGroup& group);

/// Undoes PrepareCollisionLists: every face is drawn, the collision points are appended to the
/// vertices, and both lists are empty. Preparing the group again gives the same lists.
void MergeCollisionLists(GeometryGroup& group);

}  // namespace mapexport
