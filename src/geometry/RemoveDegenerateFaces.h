// Removes faces that name the same vertex twice.
#pragma once

#include "geometry/GeometryGroup.h"

namespace mapexport {

/// Removes every face of which two vertex indices are equal; the others keep their order.
void RemoveDegenerateFaces(GeometryGroup& group);

}  // namespace mapexport
