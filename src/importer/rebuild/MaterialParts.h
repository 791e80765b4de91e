// Assigns the material ids of a mesh.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mapexport {

/// Gives each material of a mesh an id, in the order of their first use. When there are more
/// materials than ids, all further ones share the last id.
class MaterialParts {
 public:
  /// `material` is the host's index, -1 for none.
  std::uint16_t IdOf(int material) {
    const auto [entry, isNew] = idOf_.try_emplace(material, materials_.size());
    if (isNew && materials_.size() < kMostIds) materials_.push_back(material);
    return static_cast<std::uint16_t>(std::min(entry->second, kMostIds - 1));
  }
  /// The materials by their ids.
  std::vector<int> Take() { return std::move(materials_); }

 private:
  static constexpr std::size_t kMostIds = 65536;

  std::vector<int> materials_;
  std::unordered_map<int, std::size_t> idOf_;
};

}  // namespace mapexport
