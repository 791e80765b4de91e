// Faces of one voxel cell that are drawn together, and the list of all such batches of a group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/base/GrowableArray.h"

namespace mapexport {

/// Faces that share a material, and a list of indexed corners. Entry i of the two corner lists is
/// the batch's local vertex i. Indices are whole here; the model file keeps 16 bits of them.
struct RenderBatch {
  std::int32_t material;  ///< index into the scene's materials, -1 for none
  std::int32_t key;       ///< the source node of a transparent material's faces, else -1
  std::span<const std::uint32_t> faces;             ///< indices into the group's faces
  std::span<const std::uint32_t> cornerVertices;    ///< indices into the group's vertices
  std::span<const std::uint32_t> cornerAttributes;  ///< indices into the group's attributes
};

/// The batches of a group, in the order of the model file. All batches share four lists, each using
/// its own part, because there can be as many batches as faces.
struct RenderBatchList {
  /// A batch and its parts of the lists.
  struct Entry {
    std::int32_t material;
    std::int32_t key;
    std::size_t firstFace;
    std::size_t faceCount;
    std::size_t firstCorner;
    std::size_t cornerCount;
  };

  std::vector<Entry> entries;
  GrowableArray<std::uint32_t> faces;
  GrowableArray<std::uint32_t> cornerVertices;
  GrowableArray<std::uint32_t> cornerAttributes;

  std::size_t size() const { return entries.size(); }

  /// Batch `i`, valid until the list changes.
  RenderBatch operator[](std::size_t i) const {
    const Entry& entry = entries[i];
    return {entry.material,
            entry.key,
            {faces.data() + entry.firstFace, entry.faceCount},
            {cornerVertices.data() + entry.firstCorner, entry.cornerCount},
            {cornerAttributes.data() + entry.firstCorner, entry.cornerCount}};
  }
};

}  // namespace mapexport
