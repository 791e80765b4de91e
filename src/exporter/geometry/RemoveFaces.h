// Removes many faces at once.
#pragma once

#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Removes every face f with remove[f]. `remove` has one entry per face. The result is that of the
/// literal form, RemoveFace on each of them in ascending order, after one pass over the faces and
/// one over the sets.
void RemoveFaces(GeometryGroup& group, const std::vector<bool>& remove);

}  // namespace mapexport
