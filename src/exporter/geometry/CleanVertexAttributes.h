// Merges equal attributes that are used at the same vertex.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "host/Point3.h"

namespace mapexport {

/// Merges attributes that match and are used at one vertex index by different faces, drops the
/// merged ones and renumbers the faces' attribute indices. Of two merged attributes the one with
/// the lower index stays, with its colour; attributes without a match stay, used or not. The order
/// of the merges, and with it which attributes end up shared, follows a grid of 10 x 10 x 10 cells
/// of `cellSize`. Any size will do: along an axis where it is 0 there is one cell. Vertices and
/// faces stay; the faces' visitStamp is not needed. Near-linear, but for the attributes that match
/// at one vertex: they are looked at in pairs.
void CleanVertexAttributes(GeometryGroup& group, const Point3& cellSize);

}  // namespace mapexport
