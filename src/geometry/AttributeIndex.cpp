#include "geometry/AttributeIndex.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace mapexport {
namespace {

// Cells per unit. A cell is many times as wide as the tolerance, so that most values touch one cell
// only.
constexpr double kCoarsePosition = 4.0;
constexpr double kFinePosition = 20.0;
constexpr double kFineNormal = 4.0;
constexpr double kFineUv = 20.0;

/// Round coordinates sit on the borders of a grid through the origin; this fraction of a cell moves
/// it.
constexpr double kShift = 0.37;

/// From here on neighbouring floats are further apart than the tolerance: only equal values match.
constexpr float kFar = 524288.0f;  // 2^19

constexpr std::uint32_t kCrowded = 32;  // longest chain of the coarse table
constexpr std::uint32_t kMoved = ~0u;   // the length of a chain whose entries are in the fine table
constexpr std::size_t kSmallestTable = 256;  // chains

/// The one or two cells that the values within the tolerance of a value can lie in.
struct Cells {
  std::array<std::int64_t, 2> cell;
  int count;
};

std::int64_t NearCell(double value, double perUnit) {
  return static_cast<std::int64_t>(std::floor(value * perUnit + kShift));
}

std::int64_t FarCell(float value) {
  return (std::int64_t{1} << 40) | std::bit_cast<std::uint32_t>(value);
}

bool IsFar(float value) {
  return std::fabs(value) >= kFar;
}

std::int64_t CellOf(float value, double perUnit) {
  return IsFar(value) ? FarCell(value) : NearCell(static_cast<double>(value), perUnit);
}

Cells CellsAround(float value, double perUnit) {
  if (IsFar(value)) return {{FarCell(value), 0}, 1};
  const double centre = static_cast<double>(value);
  const double reach = static_cast<double>(kAttributeTolerance);
  const std::int64_t lo = NearCell(centre - reach, perUnit);
  const std::int64_t hi = NearCell(centre + reach, perUnit);
  return {{lo, hi}, lo == hi ? 1 : 2};
}

std::uint64_t Mix(std::uint64_t hash, std::int64_t cell) {
  hash = (hash ^ static_cast<std::uint64_t>(cell)) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

struct Axis {
  float value;
  double perUnit;
};

std::array<Axis, 3> CoarseAxes(const VertexAttribute& x) {
  return {{{x.position.x, kCoarsePosition},
           {x.position.y, kCoarsePosition},
           {x.position.z, kCoarsePosition}}};
}

std::array<Axis, 9> FineAxes(const VertexAttribute& x) {
  return {{{x.position.x, kFinePosition},
           {x.position.y, kFinePosition},
           {x.position.z, kFinePosition},
           {x.normal.x, kFineNormal},
           {x.normal.y, kFineNormal},
           {x.normal.z, kFineNormal},
           {x.uvw.x, kFineUv},
           {x.uvw.y, kFineUv},
           {x.uvw.z, kFineUv}}};
}

template <std::size_t kAxes>
std::uint64_t HashOf(std::uint64_t seed, const std::array<Axis, kAxes>& axes) {
  for (const Axis& axis : axes) seed = Mix(seed, CellOf(axis.value, axis.perUnit));
  return seed;
}

/// Calls `visit` with the hash of every cell that a match can lie in.
template <std::size_t kAxes, typename Visit>
void VisitCells(std::uint64_t seed, const std::array<Axis, kAxes>& axes, const Visit& visit) {
  std::array<Cells, kAxes> cells;
  for (std::size_t i = 0; i < kAxes; ++i) cells[i] = CellsAround(axes[i].value, axes[i].perUnit);
  const auto descend = [&](const auto& self, std::size_t axis, std::uint64_t hash) -> void {
    if (axis == kAxes) {
      visit(hash);
      return;
    }
    for (int i = 0; i < cells[axis].count; ++i) {
      self(self, axis + 1, Mix(hash, cells[axis].cell[static_cast<std::size_t>(i)]));
    }
  };
  descend(descend, 0, seed);
}

std::uint64_t FineSeed(const VertexAttribute& x) {
  return Mix(1, x.material);
}

bool IsFinite(const Point3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// What is not finite matches nothing, not even itself.
bool CanMatch(const VertexAttribute& x) {
  return IsFinite(x.position) && IsFinite(x.normal) && IsFinite(x.uvw);
}

}  // namespace

std::uint32_t AttributeIndex::FindFirst(const VertexAttribute& x,
                                        std::span<const VertexAttribute> attributes) const {
  if (coarse_.chains.empty() || !CanMatch(x)) return kNone;
  std::uint32_t best = kNone;
  bool crowded = false;
  VisitCells(0, CoarseAxes(x), [&](std::uint64_t hash) {
    const Table::Chain& chain = coarse_.At(hash);
    if (chain.length == kMoved) {
      crowded = true;
    } else {
      best = FirstOfChain(chain, x, attributes, best);
    }
  });
  if (crowded) {
    VisitCells(FineSeed(x), FineAxes(x), [&](std::uint64_t hash) {
      best = FirstOfChain(fine_.At(hash), x, attributes, best);
    });
  }
  return best;
}

std::uint32_t AttributeIndex::FirstOfChain(const Table::Chain& chain, const VertexAttribute& x,
                                           std::span<const VertexAttribute> attributes,
                                           std::uint32_t best) const {
  for (std::uint32_t i = chain.first; i < best; i = next_[i]) {
    if (AttributesMatch(x, attributes[i])) return i;
  }
  return best;
}

void AttributeIndex::Update(std::span<const VertexAttribute> attributes) {
  while (Count() < attributes.size()) {
    const auto i = static_cast<std::uint32_t>(Count());
    next_.push_back(kNone);
    if (coarse_.entries >= coarse_.chains.size()) {
      Rebuild(attributes);
    } else {
      Insert(i, attributes);
    }
  }
}

void AttributeIndex::Clear() {
  *this = AttributeIndex();
}

void AttributeIndex::Rebuild(std::span<const VertexAttribute> attributes) {
  coarse_.chains.assign(std::max(kSmallestTable, std::bit_ceil(2 * Count())), {});
  coarse_.entries = 0;
  fine_.chains.assign(std::max(kSmallestTable, std::bit_ceil(2 * fine_.entries + 1)), {});
  fine_.entries = 0;
  for (std::uint32_t i = 0; i < Count(); ++i) Insert(i, attributes);
}

void AttributeIndex::Insert(std::uint32_t i, std::span<const VertexAttribute> attributes) {
  next_[i] = kNone;
  ++coarse_.entries;
  if (!CanMatch(attributes[i])) return;
  Table::Chain& chain = coarse_.At(HashOf(0, CoarseAxes(attributes[i])));
  if (chain.length == kCrowded) {
    std::uint32_t moved = chain.first;
    chain = {kNone, kNone, kMoved};
    while (moved != kNone) {
      const std::uint32_t following = next_[moved];
      InsertFine(moved, attributes);
      moved = following;
    }
  }
  if (chain.length == kMoved) {
    InsertFine(i, attributes);
  } else {
    Append(chain, i);
  }
}

void AttributeIndex::InsertFine(std::uint32_t i, std::span<const VertexAttribute> attributes) {
  if (fine_.entries >= fine_.chains.size()) GrowFine(attributes);
  ++fine_.entries;
  Append(fine_.At(HashOf(FineSeed(attributes[i]), FineAxes(attributes[i]))), i);
}

void AttributeIndex::GrowFine(std::span<const VertexAttribute> attributes) {
  std::vector<std::uint32_t> members;
  members.reserve(fine_.entries);
  for (const Table::Chain& chain : fine_.chains) {
    for (std::uint32_t i = chain.first; i != kNone; i = next_[i]) members.push_back(i);
  }
  std::ranges::sort(members);
  fine_.chains.assign(std::max(kSmallestTable, 4 * fine_.chains.size()), {});
  for (const std::uint32_t i : members) {
    Append(fine_.At(HashOf(FineSeed(attributes[i]), FineAxes(attributes[i]))), i);
  }
}

void AttributeIndex::Append(Table::Chain& chain, std::uint32_t i) {
  ++chain.length;
  if (chain.first == kNone || i < chain.first) {
    next_[i] = chain.first;
    if (chain.first == kNone) chain.last = i;
    chain.first = i;
    return;
  }
  // An entry that moves here from a crowded cell can be older than what is here already.
  std::uint32_t before = i > chain.last ? chain.last : chain.first;
  while (next_[before] < i) before = next_[before];
  next_[i] = next_[before];
  next_[before] = i;
  if (i > chain.last) chain.last = i;
}

}  // namespace mapexport
