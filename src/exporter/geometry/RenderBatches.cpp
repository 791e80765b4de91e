#include "exporter/geometry/RenderBatches.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

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

/// A face of the current cell: its place among all faces of the partition, and its index. Batches
/// are ordered by the places of the faces that began them.
struct PlacedFace {
  std::uint32_t place;
  std::uint32_t face;
};

/// Sorts the drawn faces of a cell by kind. Kinds come in the order of their first faces.
class KindSorter {
 public:
  KindSorter(const GeometryGroup& group, const MaterialsList& materials)
      : group_(group), materials_(materials) {}

  /// Calls `visit` with each kind and its faces. `firstPlace` is the place of the cell's first
  /// face.
  template <typename Visit>
  void Sort(std::span<const std::uint32_t> faces, std::uint32_t firstPlace, const Visit& visit) {
    Number(faces, firstPlace);
    if (kinds_.size() == 1) {
      visit(kinds_[0].kind, std::span<const PlacedFace>(placed_));
      return;
    }
    std::uint32_t end = 0;
    for (Kind& kind : kinds_) {
      end += kind.faces;
      kind.end = end;
    }
    sorted_.resize(placed_.size());
    for (std::size_t i = placed_.size(); i-- > 0;) sorted_[--kinds_[numbers_[i]].end] = placed_[i];
    for (const Kind& kind : kinds_) {
      visit(kind.kind, std::span<const PlacedFace>(sorted_).subspan(kind.end, kind.faces));
    }
  }

 private:
  struct Kind {
    BatchKind kind;
    std::uint32_t faces = 0;
    std::uint32_t end = 0;  ///< of its sorted faces; their begin once they are placed
  };

  /// Fills `placed_` with the drawn faces and `numbers_` with the number of each one's kind.
  void Number(std::span<const std::uint32_t> faces, std::uint32_t firstPlace) {
    std::unordered_map<BatchKind, std::uint32_t, BatchKindHash> known;
    kinds_.clear();
    placed_.clear();
    numbers_.clear();
    std::uint32_t number = 0;
    for (std::uint32_t i = 0; i < faces.size(); ++i) {
      FetchAhead(group_.faces, faces, i);
      const GroupFace& face = group_.faces[faces[i]];
      if (face.drawn == 0) continue;
      const bool perNode = materials_.IsTransparent(face.material);
      const BatchKind kind{face.material, perNode ? face.nodeIndex : -1};
      // Faces of one kind mostly follow each other.
      if (kinds_.empty() || kinds_[number].kind != kind) {
        const auto next = static_cast<std::uint32_t>(kinds_.size());
        number = known.try_emplace(kind, next).first->second;
        if (number == next) kinds_.push_back({kind});
      }
      ++kinds_[number].faces;
      placed_.push_back({firstPlace + i, faces[i]});
      numbers_.push_back(number);
    }
  }

  const GeometryGroup& group_;
  const MaterialsList& materials_;
  std::vector<Kind> kinds_;
  std::vector<PlacedFace> placed_;
  std::vector<std::uint32_t> numbers_;
  std::vector<PlacedFace> sorted_;
};

/// Builds the batches, a round for each kind of each cell: faces of different kinds can neither
/// share a batch nor keep each other out of one. Each vertex has a chain of its uses (batch and
/// attribute) in this round. A face is kept out of exactly those batches that use one of its
/// vertices with another attribute.
class BatchBuilder {
 public:
  explicit BatchBuilder(GeometryGroup& group)
      : group_(group), newestUse_(group.vertices.size(), kNoUse) {}

  void AddFaces(const BatchKind& kind, std::span<const PlacedFace> faces) {
    pool_.clear();
    started_.clear();
    blocked_.clear();
    batchOfFace_.clear();
    for (const PlacedFace& placed : faces) {
      const GroupFace& face = group_.faces[placed.face];
      const std::uint32_t batch = FindBatch(face);
      if (batch == started_.size()) {
        started_.push_back({placed.place, static_cast<std::uint32_t>(pool_.size())});
        blocked_.push_back(0);
      }
      ++started_[batch].faces;
      batchOfFace_.push_back(batch);
      for (std::size_t k = 0; k < 3; ++k) AddCorner(batch, face.v[k], face.a[k]);
    }
    Finish(kind, faces);
  }

  /// All batches, in the order of the group's list.
  RenderBatchList TakeBatches() {
    BringIntoListOrder();
    return std::move(batches_);
  }

 private:
  static constexpr std::uint32_t kNoUse = std::numeric_limits<std::uint32_t>::max();

  /// A local vertex of a batch, in the chain of its vertex.
  struct Use {
    std::uint32_t batch;
    std::uint32_t vertex;
    std::uint32_t attribute;
    std::uint32_t next;
  };
  /// A batch of this round.
  struct StartedBatch {
    std::uint32_t place;     ///< of the face that began it
    std::uint32_t firstUse;  ///< its first one in the pool
    std::uint32_t faces = 0;
    std::uint32_t corners = 0;
    // Where its next face and corner are stored in the lists of all batches.
    std::size_t nextFace = 0;
    std::size_t nextCorner = 0;
  };

  /// The first batch of this round that can take the face; the count of batches when none can.
  std::uint32_t FindBatch(const GroupFace& face) {
    ++stamp_;
    bool blocked = false;
    for (std::size_t k = 0; k < 3; ++k) {
      for (std::uint32_t u = newestUse_[face.v[k]]; u != kNoUse; u = pool_[u].next) {
        if (pool_[u].attribute == face.a[k]) continue;
        blocked_[pool_[u].batch] = stamp_;
        blocked = true;
      }
    }
    std::uint32_t batch = 0;
    while (blocked && batch < started_.size() && blocked_[batch] == stamp_) ++batch;
    return batch;
  }

  /// Gives the batch a local vertex for that vertex and attribute unless it has one.
  void AddCorner(std::uint32_t batch, std::uint32_t v, std::uint32_t attribute) {
    const std::uint32_t newest = newestUse_[v];
    // Uses older than the batch can't belong to it, so the search ends there.
    for (std::uint32_t u = newest; u != kNoUse && u >= started_[batch].firstUse;
         u = pool_[u].next) {
      if (pool_[u].batch == batch && pool_[u].attribute == attribute) return;
    }
    newestUse_[v] = static_cast<std::uint32_t>(pool_.size());
    pool_.push_back({batch, v, attribute, newest});
    ++started_[batch].corners;
  }

  /// Appends the batches of this round to the list. Until its order is known, faces have the number
  /// of their batch in the order of appending.
  void Finish(const BatchKind& kind, std::span<const PlacedFace> faces) {
    const std::size_t firstBatch = batches_.entries.size();
    std::size_t faceCount = batches_.faces.size();
    std::size_t cornerCount = batches_.cornerVertices.size();
    for (StartedBatch& started : started_) {
      places_.push_back(started.place);
      batches_.entries.push_back(
          {kind.material, kind.key, faceCount, started.faces, cornerCount, started.corners});
      started.nextFace = faceCount;
      started.nextCorner = cornerCount;
      faceCount += started.faces;
      cornerCount += started.corners;
    }
    batches_.faces.Extend(faceCount);
    batches_.cornerVertices.Extend(cornerCount);
    batches_.cornerAttributes.Extend(cornerCount);
    for (std::size_t i = 0; i < faces.size(); ++i) {
      const std::size_t batch = firstBatch + batchOfFace_[i];
      const std::size_t place = started_[batchOfFace_[i]].nextFace++;
      batches_.faces[place] = faces[i].face;
      GroupFace& face = group_.faces[faces[i].face];
      face.batchIndex = static_cast<std::int32_t>(batch);
      face.batchPosition = static_cast<std::uint16_t>(place - batches_.entries[batch].firstFace);
    }
    for (const Use& use : pool_) {
      const std::size_t corner = started_[use.batch].nextCorner++;
      batches_.cornerVertices[corner] = use.vertex;
      batches_.cornerAttributes[corner] = use.attribute;
      newestUse_[use.vertex] = kNoUse;
    }
  }

  /// The list's order is that of inserting each batch, in the order of creation, before the first
  /// one of its material, or at the front.
  void BringIntoListOrder() {
    std::vector<std::uint32_t> created(places_.size());
    std::iota(created.begin(), created.end(), 0u);
    std::ranges::sort(created, {}, [&](std::uint32_t i) { return places_[i]; });
    std::unordered_map<std::int32_t, std::size_t> rankByMaterial;
    std::vector<std::pair<std::size_t, std::size_t>> order;  // the material's rank, when created
    order.reserve(created.size());
    for (std::size_t i = 0; i < created.size(); ++i) {
      const std::int32_t material = batches_.entries[created[i]].material;
      const auto rank = rankByMaterial.try_emplace(material, rankByMaterial.size());
      order.emplace_back(rank.first->second, i);
    }
    std::ranges::sort(order, std::greater());
    std::vector<RenderBatchList::Entry> ordered;
    ordered.reserve(order.size());
    std::vector<std::int32_t> ordinals(order.size());
    for (const auto& [rank, i] : order) {
      ordinals[created[i]] = static_cast<std::int32_t>(ordered.size());
      ordered.push_back(batches_.entries[created[i]]);
    }
    batches_.entries = std::move(ordered);
    for (GroupFace& face : group_.faces) {
      if (face.drawn != 0) face.batchIndex = ordinals[static_cast<std::size_t>(face.batchIndex)];
    }
  }

  GeometryGroup& group_;
  RenderBatchList batches_;
  std::vector<std::uint32_t> places_;  ///< per batch the place of the face that began it
  std::vector<StartedBatch> started_;
  std::vector<std::uint64_t> blocked_;  ///< per batch the stamp of the last face it could not take
  std::vector<std::uint32_t> batchOfFace_;  ///< of the faces of this round
  std::uint64_t stamp_ = 0;                 ///< faces looked at so far
  std::vector<std::uint32_t> newestUse_;    ///< per vertex of the group, of this round
  std::vector<Use> pool_;                   ///< the uses of this round, in the order of creation
};

}  // namespace

void BuildRenderBatches(GeometryGroup& group, const VoxelPartition& partition,
                        const MaterialsList& materials) {
  KindSorter sorter(group, materials);
  BatchBuilder builder(group);
  for (std::size_t cell = 0; cell < partition.CellCount(); ++cell) {
    sorter.Sort(partition.FacesOf(cell), partition.starts[cell],
                [&](const BatchKind& kind, std::span<const PlacedFace> faces) {
                  builder.AddFaces(kind, faces);
                });
  }
  group.batches = builder.TakeBatches();
}

}  // namespace mapexport
