#include "geometry/RenderBatches.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "materials/SceneMaterials.h"

namespace mapexport {
namespace {

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

/// A face of the cell at hand: its place among all faces of the partition, which orders the batches
/// that faces begin, and its index.
struct PlacedFace {
  std::uint32_t place;
  std::uint32_t face;
};

/// A batch, and the place of the face that began it.
struct PlacedBatch {
  std::uint32_t place;
  RenderBatch batch;
};

/// Builds the batches of one cell after the other. The faces of each kind are looked at by
/// themselves, as faces of different kinds can neither share a batch nor keep each other out of
/// one. Each vertex knows its uses (batch and attribute) by faces of the kind; a face is kept out
/// of exactly the batches in which one of its vertices is used with another attribute.
class BatchBuilder {
 public:
  explicit BatchBuilder(const GeometryGroup& group)
      : group_(group), uses_(group.vertices.size(), Uses{0, kNoUse}) {}

  void AddCell(std::span<const std::uint32_t> faces, std::uint32_t firstPlace) {
    std::unordered_map<BatchKind, std::size_t, BatchKindHash> kindIndex;
    std::vector<std::pair<BatchKind, std::vector<PlacedFace>>> kinds;
    for (std::uint32_t i = 0; i < faces.size(); ++i) {
      const GroupFace& face = group_.faces[faces[i]];
      if (face.drawn == 0) continue;
      const bool perNode = materials_.IsTransparent(face.material);
      const BatchKind kind{face.material, perNode ? face.nodeIndex : -1};
      const auto known = kindIndex.try_emplace(kind, kinds.size());
      if (known.second) kinds.emplace_back(kind, std::vector<PlacedFace>());
      kinds[known.first->second].second.push_back({firstPlace + i, faces[i]});
    }
    for (const auto& [kind, members] : kinds) AddFacesOfKind(kind, members);
  }

  std::vector<PlacedBatch> TakeBatches() { return std::move(batches_); }

 private:
  static constexpr std::uint32_t kNoUse = std::numeric_limits<std::uint32_t>::max();

  /// A local vertex of a batch, in the chain of its vertex.
  struct Use {
    std::uint32_t batch;
    std::uint32_t attribute;
    std::uint32_t next;
  };
  /// The chain of a vertex; it belongs to the round it was begun in.
  struct Uses {
    std::uint32_t round;
    std::uint32_t first;
  };

  /// Calls `visit` with each use of the vertex in this round.
  template <typename Visit>
  void VisitUses(std::uint32_t v, const Visit& visit) const {
    if (uses_[v].round != round_) return;
    for (std::uint32_t u = uses_[v].first; u != kNoUse; u = pool_[u].next) visit(pool_[u]);
  }

  void AddFacesOfKind(const BatchKind& kind, std::span<const PlacedFace> faces) {
    ++round_;
    pool_.clear();
    const std::size_t firstBatch = batches_.size();
    for (const PlacedFace& placed : faces) {
      const GroupFace& face = group_.faces[placed.face];
      const std::size_t batch = FindBatch(face, firstBatch);
      if (batch == batches_.size()) {
        PlacedBatch& added = batches_.emplace_back();
        added.place = placed.place;
        added.batch.material = kind.material;
        added.batch.key = kind.key;
        blocked_.push_back(0);
      }
      for (std::size_t k = 0; k < 3; ++k) AddCorner(batch, face.v[k], face.a[k]);
      batches_[batch].batch.faces.Append(placed.face);
    }
  }

  /// The first batch from `firstBatch` on that can take the face; the number of batches when none
  /// can.
  std::size_t FindBatch(const GroupFace& face, std::size_t firstBatch) {
    ++stamp_;
    for (std::size_t k = 0; k < 3; ++k) {
      VisitUses(face.v[k], [&](const Use& use) {
        if (use.attribute != face.a[k]) blocked_[use.batch] = stamp_;
      });
    }
    std::size_t batch = firstBatch;
    while (batch < batches_.size() && blocked_[batch] == stamp_) ++batch;
    return batch;
  }

  /// Gives the batch a local vertex for that vertex and attribute unless it has one.
  void AddCorner(std::size_t batch, std::uint32_t v, std::uint32_t attribute) {
    bool found = false;
    VisitUses(v,
              [&](const Use& use) { found |= use.batch == batch && use.attribute == attribute; });
    if (found) return;
    if (uses_[v].round != round_) uses_[v] = {round_, kNoUse};
    pool_.push_back({static_cast<std::uint32_t>(batch), attribute, uses_[v].first});
    uses_[v].first = static_cast<std::uint32_t>(pool_.size() - 1);
    batches_[batch].batch.cornerVertices.push_back(v);
    batches_[batch].batch.cornerAttributes.push_back(attribute);
  }

  const GeometryGroup& group_;
  const MaterialsList& materials_ = SceneMaterials();
  std::vector<PlacedBatch> batches_;
  std::vector<std::uint64_t> blocked_;  ///< per batch: the stamp of the last face it could not take
  std::uint64_t stamp_ = 0;             ///< faces looked at so far
  std::uint32_t round_ = 0;             ///< kinds of cells looked at so far
  std::vector<Uses> uses_;              ///< per vertex of the group
  std::vector<Use> pool_;               ///< the uses of this round
};

/// Brings batches into the order of the group's list: in the order of their first faces, each is
/// inserted before the first batch of its material, or at the front.
std::vector<RenderBatch> InListOrder(std::vector<PlacedBatch> batches) {
  std::ranges::sort(batches, {}, &PlacedBatch::place);
  std::unordered_map<std::int32_t, std::size_t> rankByMaterial;
  std::vector<std::pair<std::size_t, std::size_t>> order;  // the material's rank, the batch
  order.reserve(batches.size());
  for (std::size_t i = 0; i < batches.size(); ++i) {
    const auto rank = rankByMaterial.try_emplace(batches[i].batch.material, rankByMaterial.size());
    order.emplace_back(rank.first->second, i);
  }
  std::ranges::sort(order, std::greater());
  std::vector<RenderBatch> ordered;
  ordered.reserve(batches.size());
  for (const auto& [rank, i] : order) ordered.push_back(std::move(batches[i].batch));
  return ordered;
}

}  // namespace

void BuildRenderBatches(GeometryGroup& group, const VoxelPartition& partition) {
  BatchBuilder builder(group);
  for (std::size_t cell = 0; cell < partition.CellCount(); ++cell) {
    builder.AddCell(partition.FacesOf(cell), partition.starts[cell]);
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
