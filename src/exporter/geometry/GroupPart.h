// Makes a group of some of the faces of another.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// The entries of a list that a part uses, and their indices in the part's list.
class PartIndices {
 public:
  explicit PartIndices(std::size_t count) : own_(count, kNone) {}

  void Use(std::uint32_t entry) {
    if (own_[entry] != kNone) return;
    own_[entry] = 0;
    used_.push_back(entry);
  }
  /// Numbers the entries in their order; returns them.
  std::span<const std::uint32_t> Number();
  /// The number of an entry.
  std::uint32_t Of(std::uint32_t entry) const { return own_[entry]; }
  /// Forgets the part.
  void Clear();

 private:
  static constexpr std::uint32_t kNone = ~0u;

  std::vector<std::uint32_t> own_;
  std::vector<std::uint32_t> used_;
};

/// Makes the parts of one group, each in time near-linear in its faces.
class PartMaker {
 public:
  /// `group` stays as it is, with every face in the list of its surface set.
  explicit PartMaker(const GeometryGroup& group);

  /// The next part: a group of these faces, given in ascending order, with the vertices, attributes
  /// and surface sets that they use, all in the order of the group, bit by bit. The first part also
  /// gets the sets that have no face. It has the group's name and bounds, and so its voxel grid.
  /// Valid until the next part, which reuses its memory.
  GeometryGroup& Make(std::span<const std::uint32_t> faces);

 private:
  void UseLists(std::span<const std::uint32_t> faces);
  void CopyLists();

  const GeometryGroup& group_;
  GeometryGroup part_;
  bool isFirst_ = true;
  PartIndices vertices_;
  PartIndices attributes_;
  PartIndices sets_;
};

}  // namespace mapexport
