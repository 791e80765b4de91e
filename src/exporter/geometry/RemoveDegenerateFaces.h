// Removes faces that name the same vertex twice.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Whether two of the face's vertex indices are equal.
inline bool IsDegenerate(const GroupFace& face) {
  const auto& v = face.v;
  return v[0] == v[1] || v[1] == v[2] || v[2] == v[0];
}

/// Removes every face with two equal vertex indices; the others keep their order. Literal form:
/// LiteralRemoveDegenerateFaces in tests/reference/LiteralWeldVertices.h.
void RemoveDegenerateFaces(GeometryGroup& group);

}  // namespace mapexport
