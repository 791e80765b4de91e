// Groups the drawn faces of each voxel cell into render batches.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/geometry/VoxelPartition.h"
#include "exporter/materials/MaterialsList.h"

namespace mapexport {

/// Builds `group.batches` from the partition of all its faces and stores in each of their faces the
/// ordinal of its batch and its place in it.
///
/// A face goes into the first batch of its cell that has its material and its key and in which none
/// of its vertices occurs with another attribute; else into a new one. The key is the face's node
/// for a transparent material, -1 for any other, so that transparent faces are batched per source
/// node. Batches of one material are adjacent: materials in reverse order of their first batch, the
/// batches of a material in reverse order of creation.
///
/// Near-linear, except that k faces with k different attributes at one vertex cost k * k. Literal
/// form: Batches in tests/reference/LiteralGeometry.h.
void BuildRenderBatches(GeometryGroup& group, const VoxelPartition& partition,
                        const MaterialsList& materials);

}  // namespace mapexport
