// Faces of one voxel cell that are drawn in one go.
#pragma once

#include <cstdint>
#include <vector>

#include "plugin/state/GrowableArray.h"

namespace mapexport {

/// Faces that share a material, and a list of indexed corners. Entry i of the two corner lists is
/// the batch's local vertex i. Indices are whole here; the model file keeps 16 bits of them.
struct RenderBatch {
  std::int32_t material = -1;  ///< index into the scene's materials, -1 for none
  std::int32_t key = -1;       ///< the source node of a transparent material's faces, else -1
  GrowableArray<std::uint32_t, 20> faces;       ///< indices into the group's faces
  std::vector<std::uint32_t> cornerVertices;    ///< indices into the group's vertices
  std::vector<std::uint32_t> cornerAttributes;  ///< indices into the group's attributes
};

}  // namespace mapexport
