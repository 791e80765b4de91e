// Merges vertices that lie close to each other.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Merges each vertex into the one with the largest lower index that lies closer than `distance`,
/// following chains in index order. A negative distance works like its absolute value, 0 merges
/// nothing. Surviving vertices keep their positions and their order. Then removes faces that have
/// become slivers. Attributes stay. Returns whether RemoveDegenerateFaces has faces to remove.
/// Literal form: tests/reference/LiteralWeldVertices.h.
bool WeldVertices(GeometryGroup& group, float distance);

}  // namespace mapexport
