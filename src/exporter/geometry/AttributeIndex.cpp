#include "exporter/geometry/AttributeIndex.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

#include "exporter/geometry/AttributeCells.h"

namespace mapexport {
namespace {

constexpr double kCellsPerUnit = 1.0;         // of the large cells
constexpr std::uint32_t kFewAttributes = 32;  // at most in a cell that is not crowded
constexpr std::size_t kSmallestTable = 256;   // entries
constexpr std::size_t kLargeTable = 1 << 17;  // entries, a megabyte

/// False for an attribute that matches nothing, not even itself.
bool CanMatch(const VertexAttribute& x) {
  return IsFinite(x.position) && IsFinite(x.normal) && IsFinite(x.uvw);
}

std::array<CellsAround, 3> AxesOf(const Point3& position) {
  return {CellsAround({position.x, kCellsPerUnit}), CellsAround({position.y, kCellsPerUnit}),
          CellsAround({position.z, kCellsPerUnit})};
}

std::uint32_t Upper(std::uint64_t hash) {
  return static_cast<std::uint32_t>(hash >> 32);
}

/// The place of a position, but with the cell's hash in `cell`: its number is not yet known.
AttributePlace HashedPlaceOf(const Point3& position) {
  if (!IsFinite(position)) return {AttributePlace::Reach::kNone, 0};
  const std::array<CellsAround, 3> axes = AxesOf(position);
  std::uint64_t hash = 0;
  for (const CellsAround& axis : axes) hash = MixCell(hash, axis.cell[0]);
  const bool one = axes[0].count == 1 && axes[1].count == 1 && axes[2].count == 1;
  return {one ? AttributePlace::Reach::kOneCell : AttributePlace::Reach::kSeveralCells,
          Upper(hash)};
}

}  // namespace

AttributePlace AttributeIndex::PlaceOf(const Point3& position) {
  return PlacesOf({&position, 1}).front();
}

std::vector<AttributePlace> AttributeIndex::PlacesOf(std::span<const Point3> positions) {
  ReserveCells(chains_.size() + positions.size());
  std::vector<AttributePlace> places;
  places.reserve(positions.size());
  // All hashes come first, so that table entries can be fetched ahead. Each `cell` holds the hash
  // until its turn, the cell's number afterwards.
  for (const Point3& position : positions) places.push_back(HashedPlaceOf(position));
  constexpr std::size_t kAhead = 16;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (i + kAhead < places.size()) {
      __builtin_prefetch(&table_[places[i + kAhead].cell & (table_.size() - 1)]);
    }
    if (places[i].reach != AttributePlace::Reach::kNone) {
      places[i].cell = FindOrAddCell(places[i].cell);
    }
  }
  return places;
}

std::uint32_t AttributeIndex::FindFirst(const VertexAttribute& x, const AttributePlace& place,
                                        std::span<const VertexAttribute> attributes) const {
  if (place.reach == AttributePlace::Reach::kNone) return kNone;
  const std::uint32_t best = FirstOfCell(place.cell, x, attributes, kNone);
  if (place.reach == AttributePlace::Reach::kOneCell) return best;
  return FirstOfNeighbours(x, place.cell, attributes, best);
}

/// The least of `best` and of the matches in one cell; in a crowded one, in all crowded cells.
std::uint32_t AttributeIndex::FirstOfCell(std::uint32_t cell, const VertexAttribute& x,
                                          std::span<const VertexAttribute> attributes,
                                          std::uint32_t best) const {
  if (chains_[cell].newest == kCrowdedCell) {
    return CanMatch(x) ? crowded_.FindFirst(x, attributes, best) : best;
  }
  for (std::uint32_t link = chains_[cell].newest; link != 0; link = older_[link - 1]) {
    const std::uint32_t i = link - 1;
    if (i < best && AttributesMatch(x, attributes[i])) best = i;
  }
  return best;
}

/// The least of `best` and of the matches in the cells around `ownCell`.
std::uint32_t AttributeIndex::FirstOfNeighbours(const VertexAttribute& x, std::uint32_t ownCell,
                                                std::span<const VertexAttribute> attributes,
                                                std::uint32_t best) const {
  // All crowded cells share one table: it is searched once.
  bool crowdedDone = chains_[ownCell].newest == kCrowdedCell;
  VisitCells(0, AxesOf(x.position), [&](std::uint64_t hash) {
    const Entry& entry = table_[PlaceInTable(Upper(hash))];
    if (entry.cell == 0 || entry.cell - 1 == ownCell) return;
    const bool isCrowded = chains_[entry.cell - 1].newest == kCrowdedCell;
    if (isCrowded && std::exchange(crowdedDone, true)) return;
    best = FirstOfCell(entry.cell - 1, x, attributes, best);
  });
  return best;
}

void AttributeIndex::AddDistinct(const AttributePlace& place,
                                 std::span<const VertexAttribute> attributes) {
  if (distinct_ == Count()) ++distinct_;
  Insert(place, attributes);
}

void AttributeIndex::Update(std::span<const VertexAttribute> attributes) {
  if (attributes.size() < std::max(Count(), distinct_)) Clear();
  while (Count() < attributes.size()) Insert(PlaceOf(attributes[Count()].position), attributes);
}

void AttributeIndex::Clear() {
  *this = AttributeIndex();
}

void AttributeIndex::Release() {
  const std::size_t distinct = distinct_;
  Clear();
  distinct_ = distinct;
}

/// Where the entry with that hash is in the table, or else where a new one goes.
std::size_t AttributeIndex::PlaceInTable(std::uint32_t hash) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t i = hash & mask;
  while (table_[i].cell != 0 && table_[i].hash != hash) i = (i + 1) & mask;
  return i;
}

std::uint32_t AttributeIndex::FindOrAddCell(std::uint32_t hash) {
  Entry& entry = table_[PlaceInTable(hash)];
  if (entry.cell == 0) {
    chains_.Append({0, 0});
    entry = {hash, static_cast<std::uint32_t>(chains_.size())};
  }
  return entry.cell - 1;
}

/// Makes the table large enough for that many cells: it stays at most three quarters full.
void AttributeIndex::ReserveCells(std::size_t count) {
  const std::size_t least = count + count / 3 + 1;
  if (least <= table_.size()) return;
  // A small table takes room ahead, which costs less than filling it anew.
  const std::size_t ahead = table_.size() < kLargeTable ? 4 * table_.size() : 0;
  std::vector<Entry> former(std::max({kSmallestTable, ahead, std::bit_ceil(least)}));
  former.swap(table_);
  for (const Entry& entry : former) {
    if (entry.cell != 0) table_[PlaceInTable(entry.hash)] = entry;
  }
}

void AttributeIndex::Insert(const AttributePlace& place,
                            std::span<const VertexAttribute> attributes) {
  const auto i = static_cast<std::uint32_t>(older_.size());
  older_.Append(0);
  if (place.reach == AttributePlace::Reach::kNone) return;
  Chain& chain = chains_[place.cell];
  if (chain.length == kFewAttributes) MoveToCrowded(place.cell, attributes);
  if (chain.newest == kCrowdedCell) {
    if (CanMatch(attributes[i])) crowded_.Insert(i, attributes);
    return;
  }
  older_[i] = chain.newest;
  chain = {i + 1, chain.length + 1};
}

/// Moves the attributes of a cell that has become crowded, oldest first.
void AttributeIndex::MoveToCrowded(std::uint32_t cell,
                                   std::span<const VertexAttribute> attributes) {
  std::vector<std::uint32_t> moved;
  for (std::uint32_t link = chains_[cell].newest; link != 0; link = older_[link - 1]) {
    moved.push_back(link - 1);
  }
  std::ranges::reverse(moved);
  for (const std::uint32_t i : moved) {
    if (CanMatch(attributes[i])) crowded_.Insert(i, attributes);
  }
  chains_[cell] = {kCrowdedCell, 0};
}

}  // namespace mapexport
