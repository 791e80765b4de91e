// Morphed and skinned vertices of glTF meshes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "host/Point3.h"
#include "importer/gltf/GltfAccessors.h"
#include "importer/rebuild/AffineMatrix.h"

namespace mapexport {

/// Adds `displacements` times `weight` to `points`, as far as both go.
void AddMorph(std::vector<Point3>& points, std::span<const Point3> displacements, float weight);

/// The influences on the vertices of a mesh, four in each set.
struct GltfInfluences {
  std::vector<GltfValues<std::array<std::uint32_t, 4>>> joints;  ///< by set; indices in range
  std::vector<GltfValues<std::array<float, 4>>> weights;         ///< as many
};

/// Takes the vertices to where the joints have them. A vertex's weights count by their sum; one
/// without any stays where it is. `matrices` are each joint's world times its inverse bind. Both
/// lists, of which normals may be empty, are as long as those of `influences`.
void SkinVertices(const GltfInfluences& influences, std::span<const AffineMatrix> matrices,
                  std::vector<Point3>& positions, std::vector<Point3>& normals);

}  // namespace mapexport
