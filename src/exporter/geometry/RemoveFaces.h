// Removes many faces in one go.
#pragma once

#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Removes every face f with remove[f], with the same result as RemoveFace on each of them in
/// ascending order. `remove` has one entry per face. One pass over the faces and one over the sets.
void RemoveFaces(GeometryGroup& group, const std::vector<bool>& remove);

}  // namespace mapexport
