// Divides the faces of a group whose lists are too long among parts whose lists are short enough.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/geometry/VoxelPartition.h"

namespace mapexport {

/// What the lists of a group must be like in the model file.
struct ListLimit {
  std::size_t longest = 0;    ///< most entries of a list that indices address; 0: any number
  bool hasFaceTable = false;  ///< faces are addressed too, and undrawn faces have their own points
};

/// The faces of a group by part.
struct GroupParts {
  std::vector<std::uint32_t> faces;   ///< face indices, part by part; ascending within a part
  std::vector<std::uint32_t> starts;  ///< where each part's faces begin in `faces`, and their end

  /// Whether the group is to be written as it is; there are no lists then.
  bool IsWhole() const { return starts.empty(); }
  std::size_t Count() const { return IsWhole() ? 1 : starts.size() - 1; }
  /// The faces of part `i` of a group that is not whole.
  std::span<const std::uint32_t> FacesOf(std::size_t i) const {
    return std::span(faces).subspan(starts[i], starts[i + 1] - starts[i]);
  }
};

/// Divides the group by space: a part with a list that is too long is to become n parts, as many as
/// its lists demand and a few to spare, and is cut across its longest axis, so that the sides have
/// n / 2 : n - n / 2 of its faces. The cut is at the nearest voxel plane of `grid`, or when none is
/// within 5 % of the faces, at the exact place; then faces with equal centres, such as the copies
/// of two-sided ones, stay together unless they are more than that. When a side has more vertices
/// than its parts can hold, the cut is made anew, so that the sides share the vertices. Each face
/// is in one part, and a face alone is never divided.
///
/// Lists are the vertices that the part's faces use, and the corners of its batches. With a face
/// table, also its faces, and collision points are counted separately. Vertices that no face uses
/// are in no part. Every face must be in the list of its surface set, and all index
/// `group.vertices` (MergeCollisionLists). Takes n log n time and some 30 bytes per face.
GroupParts SplitGroup(const GeometryGroup& group, const VoxelGrid& grid, const ListLimit& limit);

}  // namespace mapexport
