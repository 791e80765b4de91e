// Removes faces that name the same vertex twice.
#pragma once

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Whether two of the face's vertex indices are equal.
inline bool IsDegenerate(const GroupFace& face) {
  const auto& v = face.v;
  return v[0] == v[1] || v[1] == v[2] || v[2] == v[0];
}

/// Removes every face of which two vertex indices are equal; the others keep their order.
void RemoveDegenerateFaces(GeometryGroup& group);

}  // namespace mapexport
