// A level's geometry of any size, as gathering leaves it.
#pragma once

#include <cstddef>

#include "geometry/GeometryGroup.h"

namespace mapexport {

enum class Corners {
  kHard,     ///< every face corner has an attribute of its own that matches no other
  kRepeated  ///< every face corner has an attribute of its own that matches all at its vertex
};

/// A hilly ground of square patches, each a mesh of its own, so that the vertices along the seams
/// lie on each other until they are welded: about `vertices` vertices, and nearly twice as many
/// triangles.
GeometryGroup LevelGroup(std::size_t vertices, Corners corners);

}  // namespace mapexport
