// The geometry groups of an export.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/geometry/NodeMaterials.h"

namespace mapexport {

/// Owns the groups, in insertion order, and carries what the walk of the node tree has to remember.
class GroupList {
 public:
  std::size_t Count() const { return groups_.size(); }
  void Append(std::unique_ptr<GeometryGroup> group) { groups_.push_back(std::move(group)); }

  /// Group `index`, null at or beyond the count.
  GeometryGroup* At(std::size_t index) const {
    return index < groups_.size() ? groups_[index].get() : nullptr;
  }

  /// The first group of exactly that name, null when there is none.
  GeometryGroup* Find(const CStr& name) const {
    for (const auto& group : groups_) {
      if (group->name == name) return group.get();
    }
    return nullptr;
  }

  // The "static" subtree that is being gathered.
  bool staticMode = false;     ///< inside a subtree whose root's name begins with "static"
  bool staticPending = false;  ///< its surface set is yet to be made
  std::int32_t staticSetIndex = 0;

  /// Per host material that the walk met, null for none: thousands of nodes can share a material
  /// with thousands of sub-materials. Only for that walk: GatherGroup empties it, since the host
  /// may delete materials afterwards, and reuse their addresses.
  std::unordered_map<Mtl*, NodeMaterials> materials;

 private:
  std::vector<std::unique_ptr<GeometryGroup>> groups_;
};

}  // namespace mapexport
