#include "geometry/RenderBatches.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "materials/SceneMaterials.h"

namespace mapexport {
namespace {

/// Builds the batches of one cell after the other, in order of creation. For the cell at hand each
/// vertex knows its uses (batch and attribute); a face is kept out of exactly the batches in which
/// one of its vertices is used with another attribute.
class BatchBuilder {
 public:
  explicit BatchBuilder(const GeometryGroup& group)
      : group_(group), uses_(group.vertices.size(), Uses{0, kNoUse}) {}

  void StartCell() {
    ++cell_;
    pool_.clear();
    candidates_.clear();
  }

  void Add(std::uint32_t f) {
    const GroupFace& face = group_.faces[f];
    const std::size_t batch = FindBatch(face);
    for (std::size_t k = 0; k < 3; ++k) AddCorner(batch, face.v[k], face.a[k]);
    batches_[batch].faces.Append(f);
  }

  std::vector<RenderBatch> TakeBatches() { return std::move(batches_); }

 private:
  static constexpr std::uint32_t kNoUse = std::numeric_limits<std::uint32_t>::max();

  /// A local vertex of a batch, in the chain of its vertex.
  struct Use {
    std::uint32_t batch;
    std::uint32_t attribute;
    std::uint32_t next;
  };
  /// The chain of a vertex; it belongs to the cell it was begun in.
  struct Uses {
    std::uint32_t cell;
    std::uint32_t first;
  };

  /// What faces must have in common to share a batch.
  struct BatchKind {
    std::int32_t material;
    std::int32_t key;
    friend bool operator==(const BatchKind&, const BatchKind&) = default;
  };
  struct BatchKindHash {
    std::size_t operator()(const BatchKind& kind) const {
      const auto material = static_cast<std::uint32_t>(kind.material);
      const auto key = static_cast<std::uint32_t>(kind.key);
      return std::hash<std::uint64_t>()((std::uint64_t{material} << 32) | key);
    }
  };

  /// Calls `visit` with each use of the vertex in the cell at hand.
  template <typename Visit>
  void VisitUses(std::uint32_t v, const Visit& visit) const {
    if (uses_[v].cell != cell_) return;
    for (std::uint32_t u = uses_[v].first; u != kNoUse; u = pool_[u].next) visit(pool_[u]);
  }

  std::size_t FindBatch(const GroupFace& face) {
    const bool perNode = SceneMaterials().IsTransparent(face.material);
    const BatchKind kind{face.material, perNode ? face.nodeIndex : -1};
    ++stamp_;
    for (std::size_t k = 0; k < 3; ++k) {
      VisitUses(face.v[k], [&](const Use& use) {
        if (use.attribute != face.a[k]) blocked_[use.batch] = stamp_;
      });
    }
    std::vector<std::uint32_t>& candidates = candidates_[kind];
    for (const std::uint32_t batch : candidates) {
      if (blocked_[batch] != stamp_) return batch;
    }
    candidates.push_back(static_cast<std::uint32_t>(batches_.size()));
    RenderBatch& added = batches_.emplace_back();
    added.material = kind.material;
    added.key = kind.key;
    blocked_.push_back(0);
    return batches_.size() - 1;
  }

  /// Gives the batch a local vertex for that vertex and attribute unless it has one.
  void AddCorner(std::size_t batch, std::uint32_t v, std::uint32_t attribute) {
    bool found = false;
    VisitUses(v,
              [&](const Use& use) { found |= use.batch == batch && use.attribute == attribute; });
    if (found) return;
    if (uses_[v].cell != cell_) uses_[v] = {cell_, kNoUse};
    pool_.push_back({static_cast<std::uint32_t>(batch), attribute, uses_[v].first});
    uses_[v].first = static_cast<std::uint32_t>(pool_.size() - 1);
    batches_[batch].cornerVertices.push_back(v);
    batches_[batch].cornerAttributes.push_back(attribute);
  }

  const GeometryGroup& group_;
  std::vector<RenderBatch> batches_;
  std::vector<std::uint64_t> blocked_;  ///< per batch: the stamp of the last face it could not take
  std::uint64_t stamp_ = 0;             ///< faces looked at so far
  std::uint32_t cell_ = 0;              ///< cells begun so far
  std::vector<Uses> uses_;              ///< per vertex of the group
  std::vector<Use> pool_;               ///< the uses of the cell at hand
  /// The cell's batches of each kind, in order of creation.
  std::unordered_map<BatchKind, std::vector<std::uint32_t>, BatchKindHash> candidates_;
};

/// Brings batches from the order of their creation into that of the group's list, which is what
/// inserting each one before the first batch of its material, or at the front, comes to.
std::vector<RenderBatch> InListOrder(std::vector<RenderBatch> batches) {
  std::unordered_map<std::int32_t, std::size_t> rankByMaterial;
  std::vector<std::pair<std::size_t, std::size_t>> order;  // the material's rank, the batch
  order.reserve(batches.size());
  for (std::size_t i = 0; i < batches.size(); ++i) {
    const auto rank = rankByMaterial.try_emplace(batches[i].material, rankByMaterial.size());
    order.emplace_back(rank.first->second, i);
  }
  std::ranges::sort(order, std::greater());
  std::vector<RenderBatch> ordered;
  ordered.reserve(batches.size());
  for (const auto& place : order) ordered.push_back(std::move(batches[place.second]));
  return ordered;
}

}  // namespace

void BuildRenderBatches(GeometryGroup& group, const VoxelPartition& partition) {
  BatchBuilder builder(group);
  for (std::size_t cell = 0; cell < partition.CellCount(); ++cell) {
    builder.StartCell();
    for (const std::uint32_t f : partition.FacesOf(cell)) {
      if (group.faces[f].drawn != 0) builder.Add(f);
    }
  }
  group.batches = InListOrder(builder.TakeBatches());

  for (GroupFace& face : group.faces) face.batchIndex = -1;
  for (std::size_t ordinal = 0; ordinal < group.batches.size(); ++ordinal) {
    for (const std::uint32_t f : group.batches[ordinal].faces) {
      group.faces[f].batchIndex = static_cast<std::int32_t>(ordinal);
    }
  }
}

}  // namespace mapexport
