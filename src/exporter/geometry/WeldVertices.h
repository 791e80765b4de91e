// Merges vertices that lie close to each other.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Merges each vertex into the one with the largest lower index that lies closer than `distance` (a
/// negative distance works like its absolute value, 0 merges nothing), following chains in index
/// order. Surviving vertices keep their positions and their order. Faces that have become slivers
/// are removed afterwards. Attributes are not touched. Returns whether there are faces left for
/// RemoveDegenerateFaces.
bool WeldVertices(GeometryGroup& group, float distance);

}  // namespace mapexport
