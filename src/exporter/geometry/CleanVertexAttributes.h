// Merges equal attributes that are used at the same vertex.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "host/Point3.h"

namespace mapexport {

/// Merges attributes that match and that different faces use at one vertex index, removes the
/// merged ones and renumbers the faces' attribute indices. Of two merged attributes the one with
/// the lower index stays, with its colour. Attributes without a match stay, used or not. Vertices
/// and faces stay.
///
/// The order of the merges decides which attributes end up shared. It follows a grid of 10 x 10 x
/// 10 cells of `cellSize`, which may be anything; an axis with size 0 has one cell. The literal
/// form, which visits that grid, is in tests/reference/LiteralCleanVertexAttributes.h. Takes
/// near-linear time, except that attributes that match at one vertex are compared in pairs.
void CleanVertexAttributes(GeometryGroup& group, const Point3& cellSize);

}  // namespace mapexport
