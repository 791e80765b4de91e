// Which triangles of two models have no equal in the other.
#pragma once

#include <cstdint>
#include <vector>

#include "compare/ModelTriangles.h"

namespace mapexport {

/// For each triangle of a model 1 when it has no equal in the other one, else 0, in the order of
/// ModelTriangle::index. When a triangle occurs more often in one model, the last ones there have
/// no equal.
struct TriangleMarks {
  std::vector<std::uint8_t> drawn;
  std::vector<std::uint8_t> undrawn;
};

/// The marks of all triangles of both models; as many are set as TriangleTally::only counts.
Both<TriangleMarks> MarkTriangles(std::vector<ModelTriangle> triangles);

}  // namespace mapexport
