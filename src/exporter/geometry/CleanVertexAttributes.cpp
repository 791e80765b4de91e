#include "exporter/geometry/CleanVertexAttributes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "exporter/geometry/MatchingUses.h"

namespace mapexport {
namespace {

/// Cells per axis of the grid that orders the comparisons.
constexpr std::uint32_t kCells = 10;

std::uint32_t CellOf(float coordinate, float minimum, float cellSize) {
  if (cellSize == 0.0f) return 0;
  const float cell = (coordinate - minimum) / cellSize;
  if (!(cell > 0.0f)) return 0;  // below the grid, or no number
  return cell < static_cast<float>(kCells) ? static_cast<std::uint32_t>(cell) : kCells - 1;
}

/// Merges in the order of the literal form, because the order decides what is merged into what.
///
/// The literal form sorts every face into all grid cells that its box of cells covers. Each face f,
/// in turn, walks the cells of its box in x-major order and the faces g of each cell in ascending
/// order, and meets each g once: in the first cell that both boxes cover. For each g it compares
/// all corners k of f with all corners m of g, and merges the attributes of two corners that are at
/// one vertex and match.
///
/// So f meets its faces g ordered by (first common cell, g). Here f meets only those g that can
/// act: they use, at a vertex of f, an attribute that matches f's own attribute there. These are
/// collected from the vertices and sorted by that pair; all other comparisons merge nothing.
class AttributeMerger {
 public:
  AttributeMerger(const GeometryGroup& group, const MatchingUses& uses, const Point3& cellSize)
      : group_(group), uses_(uses), cellSize_(cellSize), target_(group.attributes.size()) {
    std::iota(target_.begin(), target_.end(), 0u);
  }

  /// Per attribute the one that it was merged into, or itself.
  std::vector<std::uint32_t> Merge() {
    for (std::uint32_t f = 0; f < group_.faces.size(); ++f) {
      if (CanChange(group_.faces[f])) Visit(f);
    }
    return std::move(target_);
  }

 private:
  bool Match(std::uint32_t a, std::uint32_t b) const {
    return AttributesMatch(group_.attributes[a], group_.attributes[b]);
  }

  /// The matching uses at corner k's vertex; none when the corner's own attribute is not one of
  /// them.
  std::span<const AttributeUse> UsesAt(const GroupFace& face, std::size_t k) const {
    const auto uses = uses_.At(face.v[k]);
    const bool own = std::ranges::binary_search(uses, face.a[k], {}, &AttributeUse::attribute);
    return own ? uses : uses.first(0);
  }

  /// Whether some comparison at the face's vertices would merge anything. If none would, nothing
  /// changes during the visit, so it can be skipped.
  bool CanChange(const GroupFace& face) const {
    for (std::size_t k = 0; k < 3; ++k) {
      const std::uint32_t own = face.a[k];
      for (const AttributeUse& use : UsesAt(face, k)) {
        if (target_[own] != target_[use.attribute] && Match(own, use.attribute)) return true;
      }
    }
    return false;
  }

  /// Compares face `f` with the faces that it meets, corner by corner.
  void Visit(std::uint32_t f) {
    const GroupFace& face = group_.faces[f];
    CollectVisits(f);
    for (const std::uint64_t visit : visits_) {
      const GroupFace& other = group_.faces[static_cast<std::uint32_t>(visit)];
      for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t m = 0; m < 3; ++m) {
          if (face.v[k] == other.v[m]) MergePair(face.a[k], other.a[m]);
        }
      }
    }
  }

  /// Fills visits_ with the faces that f meets, in order. The upper half of an entry is the first
  /// common cell, the lower half the face, so sorting gives the order.
  void CollectVisits(std::uint32_t f) {
    const GroupFace& face = group_.faces[f];
    const auto corner = LowCells(face);
    visits_.clear();
    for (std::size_t k = 0; k < 3; ++k) {
      for (const AttributeUse& use : UsesAt(face, k)) {
        if (use.attribute == face.a[k] || !Match(face.a[k], use.attribute)) continue;
        for (const std::uint32_t g : uses_.FacesOf(use)) {
          if (g != f) visits_.push_back(FirstCommonCell(corner, group_.faces[g]) << 32 | g);
        }
      }
    }
    std::ranges::sort(visits_);
    visits_.erase(std::unique(visits_.begin(), visits_.end()), visits_.end());
  }

  /// The least cell of the face's vertices, per axis.
  std::array<std::uint32_t, 3> LowCells(const GroupFace& face) const {
    std::array<std::uint32_t, 3> low{kCells, kCells, kCells};
    for (const std::uint32_t v : face.v) {
      const Point3& p = group_.vertices[v];
      low[0] = std::min(low[0], CellOf(p.x, group_.boundsMin.x, cellSize_.x));
      low[1] = std::min(low[1], CellOf(p.y, group_.boundsMin.y, cellSize_.y));
      low[2] = std::min(low[2], CellOf(p.z, group_.boundsMin.z, cellSize_.z));
    }
    return low;
  }

  /// The x-major number of the first cell that both faces' boxes cover. The faces share a vertex,
  /// so the boxes overlap; per axis the overlap begins at the larger of the two low cells.
  std::uint64_t FirstCommonCell(const std::array<std::uint32_t, 3>& low,
                                const GroupFace& other) const {
    const auto otherLow = LowCells(other);
    std::uint64_t cell = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      cell = cell * kCells + std::max(low[axis], otherLow[axis]);
    }
    return cell;
  }

  /// Redirects the larger of the two targets to the smaller. A link that it had before is lost.
  void MergePair(std::uint32_t a, std::uint32_t b) {
    if (target_[a] == target_[b] || !Match(a, b)) return;
    (target_[a] > target_[b] ? target_[a] : target_[b]) = std::min(target_[a], target_[b]);
  }

  const GeometryGroup& group_;
  const MatchingUses& uses_;
  const Point3 cellSize_;
  std::vector<std::uint32_t> target_;  ///< per attribute, never above its own index
  std::vector<std::uint64_t> visits_;
};

/// Moves the attributes that stay down and turns `target` into their new indices. An attribute
/// merged into one that was itself merged goes where that one went.
void CompactAttributes(GeometryGroup& group, std::vector<std::uint32_t>& target) {
  std::uint32_t kept = 0;
  for (std::uint32_t i = 0; i < target.size(); ++i) {
    if (target[i] < i) {
      target[i] = target[target[i]];
    } else {
      group.attributes[kept] = group.attributes[i];
      target[i] = kept++;
    }
  }
  group.attributes.Shrink(kept);
  group.attributeIndex.Clear();
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& a : face.a) a = target[a];
  }
}

}  // namespace

void CleanVertexAttributes(GeometryGroup& group, const Point3& cellSize) {
  // Gathering shares whatever matches; then nothing is left to merge.
  if (group.attributeIndex.AllDistinct(group.attributes.size())) return;
  const MatchingUses uses = FindMatchingUses(group);
  if (uses.uses.empty()) return;
  std::vector<std::uint32_t> target = AttributeMerger(group, uses, cellSize).Merge();
  CompactAttributes(group, target);
}

}  // namespace mapexport
