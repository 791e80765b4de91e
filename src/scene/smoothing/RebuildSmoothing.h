// Rebuilds smoothing groups from the normals that files store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/Mesh.h"

namespace mapexport {

struct SmoothSurfaces {
  /// By face: the lowest face of its surface; kFlatFace on flat surfaces and without normals.
  std::vector<std::uint32_t> surfaceOf;
  /// Edges with a crease inside a surface that is connected another way. Smoothing groups can't
  /// express it.
  std::size_t lostCreases = 0;
};

/// The surfaces within which the stored normals don't break. Two faces are smooth across a common
/// edge when their normals agree at both of its ends (within about one degree). Faces that are
/// connected by such edges are one surface. `normals` has one entry for each corner of each face,
/// of any length, in the mesh's space; one without a direction (null, not finite) agrees with no
/// other. They are compared only with each other, so it makes no difference whether the node
/// mirrors the mesh. Cost: linear where few faces meet at a vertex, n log n at worst.
SmoothSurfaces FindSmoothSurfaces(const Mesh& mesh, std::span<const Point3> normals);

/// Sets the smoothing groups of all faces of `mesh` so that normals computed from them break where
/// the stored ones do: one bit for each surface (FindSmoothSurfaces, AssignSmoothingBits). Returns
/// the number of lost creases.
std::size_t RebuildSmoothing(Mesh& mesh, std::span<const Point3> normals);

}  // namespace mapexport
