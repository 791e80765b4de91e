// Rebuilds smoothing groups from stored normals.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "host/Mesh.h"

namespace mapexport {

/// Normals at the three corners of a face; a null vector where there is none.
using CornerNormals = std::array<Point3, 3>;

/// Sets the smoothing groups of all faces of `mesh` so that normals computed from them break where
/// the stored ones do. Two faces are smooth across a common edge when their normals agree at both
/// of its ends (within about one degree). Faces that are connected by such edges share one bit;
/// such a surface never shares its bit with another that it touches at a vertex, as long as the
/// bits suffice. Surfaces that are flat, and faces without normals, get 0. Bit 0 is never used, so
/// no face gets the value 1, which exporters may take for "flat". A crease inside a surface that is
/// connected another way can't be expressed and is lost; returns the number of such edges.
/// `normals` has one entry per face. Cost: n log n.
std::size_t RebuildSmoothing(Mesh& mesh, const std::vector<CornerNormals>& normals);

}  // namespace mapexport
