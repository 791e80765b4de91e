#include "exporter/geometry/CrowdedAttributes.h"

#include <algorithm>
#include <array>

#include "exporter/geometry/AttributeCells.h"

namespace mapexport {
namespace {

// Cells per unit. Narrower cells hold fewer attributes, but more of a value's matches lie beyond a
// border; each such axis doubles the cells of a lookup.
constexpr double kPositionCells = 20.0;
constexpr double kNormalCells = 8.0;
constexpr double kUvCells = 20.0;
constexpr std::size_t kFewestChains = 256;

std::array<CellsAround, 9> AxesOf(const VertexAttribute& x) {
  return {CellsAround({x.position.x, kPositionCells}),
          CellsAround({x.position.y, kPositionCells}),
          CellsAround({x.position.z, kPositionCells}),
          CellsAround({x.normal.x, kNormalCells}),
          CellsAround({x.normal.y, kNormalCells}),
          CellsAround({x.normal.z, kNormalCells}),
          CellsAround({x.uvw.x, kUvCells}),
          CellsAround({x.uvw.y, kUvCells}),
          CellsAround({x.uvw.z, kUvCells})};
}

std::uint64_t SeedOf(const VertexAttribute& x) {
  return MixCell(1, static_cast<std::uint32_t>(x.material));
}

std::uint32_t HashOf(const VertexAttribute& x) {
  std::uint64_t hash = SeedOf(x);
  for (const CellsAround& axis : AxesOf(x)) hash = MixCell(hash, axis.cell[0]);
  return static_cast<std::uint32_t>(hash);
}

}  // namespace

std::uint32_t CrowdedAttributes::FindFirst(const VertexAttribute& x,
                                           std::span<const VertexAttribute> attributes,
                                           std::uint32_t best) const {
  if (chains_.empty()) return best;
  VisitCells(SeedOf(x), AxesOf(x), [&](std::uint64_t cellHash) {
    const auto hash = static_cast<std::uint32_t>(cellHash);
    std::uint32_t e = chains_[hash & (chains_.size() - 1)].first;
    for (; e != kNone && entries_[e].attribute < best; e = entries_[e].next) {
      if (entries_[e].hash != hash) continue;  // of another cell
      if (AttributesMatch(x, attributes[entries_[e].attribute])) best = entries_[e].attribute;
    }
  });
  return best;
}

void CrowdedAttributes::Insert(std::uint32_t i, std::span<const VertexAttribute> attributes) {
  if (entries_.size() >= chains_.size()) Grow();
  entries_.push_back({i, HashOf(attributes[i]), kNone});
  Link(static_cast<std::uint32_t>(entries_.size() - 1));
}

/// Doubles the chains. The entries become ascending, so each is linked at the end of its chain.
void CrowdedAttributes::Grow() {
  chains_.assign(std::max(kFewestChains, 2 * chains_.size()), {});
  std::ranges::sort(entries_, {}, &Entry::attribute);
  for (std::uint32_t e = 0; e < entries_.size(); ++e) {
    entries_[e].next = kNone;
    Link(e);
  }
}

/// Puts an entry into its ascending place in its chain, mostly the end.
void CrowdedAttributes::Link(std::uint32_t entry) {
  const std::uint32_t i = entries_[entry].attribute;
  Chain& chain = chains_[entries_[entry].hash & (chains_.size() - 1)];
  if (chain.first == kNone || i < entries_[chain.first].attribute) {
    entries_[entry].next = chain.first;
    if (chain.first == kNone) chain.last = entry;
    chain.first = entry;
    return;
  }
  // An attribute from a cell that has just become crowded can be older than those of other cells.
  const bool isNewest = i > entries_[chain.last].attribute;
  std::uint32_t before = isNewest ? chain.last : chain.first;
  while (!isNewest && entries_[entries_[before].next].attribute < i) before = entries_[before].next;
  entries_[entry].next = entries_[before].next;
  entries_[before].next = entry;
  if (isNewest) chain.last = entry;
}

}  // namespace mapexport
