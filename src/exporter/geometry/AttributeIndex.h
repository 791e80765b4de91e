// Finds the first attribute that matches another without scanning them all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/base/GrowableArray.h"
#include "exporter/geometry/CrowdedAttributes.h"
#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {

/// Where the attributes at one position are looked up. The corners at one vertex share it, so that
/// the position is hashed once per vertex.
struct AttributePlace {
  enum class Reach : std::uint32_t {
    kNone,         ///< the position is not finite and matches nothing
    kOneCell,      ///< whatever matches lies in the position's own cell
    kSeveralCells  ///< the position is so near a border that matches can lie beyond it
  };
  Reach reach = Reach::kNone;
  std::uint32_t cell = 0;  ///< number of the position's own cell, in the order of first use
};

/// The attributes of a group, sorted into cells of two sizes:
///
/// - Large cells divide the positions: 1 unit, a hundred times the matching tolerance. Few
///   positions are near a border, so nearly every lookup reads one cell. Each cell chains its
///   attributes.
/// - Such a cell can hold thousands of attributes: a detailed part, or one vertex with many
///   normals. When a 33rd attribute comes to a cell, all of them move to CrowdedAttributes. Its
///   cells are small, and divide normals and texture coordinates too: a lookup reads more cells,
///   but each holds few attributes.
///
/// Cells only leave out what can't match; AttributesMatch decides about the rest. The literal form
/// is AddAttribute in tests/reference/LiteralGeometry.h, a scan from the first attribute.
class AttributeIndex {
 public:
  static constexpr std::uint32_t kNone = CrowdedAttributes::kNone;

  /// The place of a position; a new cell is added. Valid until Clear or Release.
  AttributePlace PlaceOf(const Point3& position);
  /// The places of many positions, in the same order.
  std::vector<AttributePlace> PlacesOf(std::span<const Point3> positions);

  /// The least i with AttributesMatch(x, attributes[i]), kNone when there is none. The index must
  /// cover all of `attributes`, and `place` must be the place of x.position.
  std::uint32_t FindFirst(const VertexAttribute& x, const AttributePlace& place,
                          std::span<const VertexAttribute> attributes) const;

  /// Adds attributes[Count()], the last one, at `place`. FindFirst found no match for it.
  void AddDistinct(const AttributePlace& place, std::span<const VertexAttribute> attributes);

  /// Adds attributes[Count()] and all after it, whatever they match. Starts anew when attributes
  /// were removed from the end.
  void Update(std::span<const VertexAttribute> attributes);

  /// Attributes in the index.
  std::size_t Count() const { return older_.size(); }

  /// Whether no two of the first `count` attributes match, as far as is known.
  bool AllDistinct(std::size_t count) const { return distinct_ >= count; }

  /// Forgets everything. Call it when attributes were changed, or removed before the end.
  void Clear();
  /// Frees the memory but keeps what AllDistinct knows.
  void Release();

 private:
  /// An entry of the hash table of cells. Cells with equal hashes share one chain.
  struct Entry {
    std::uint32_t hash;
    std::uint32_t cell;  ///< the cell's number + 1; 0: the entry is free
  };
  /// The attributes of a large cell.
  struct Chain {
    std::uint32_t newest;  ///< its index + 1; 0: none; kCrowdedCell: they are in crowded_
    std::uint32_t length;  ///< 0 in a crowded cell
  };
  static constexpr std::uint32_t kCrowdedCell = ~0u;

  std::size_t PlaceInTable(std::uint32_t hash) const;
  std::uint32_t FindOrAddCell(std::uint32_t hash);
  void ReserveCells(std::size_t count);
  std::uint32_t FirstOfCell(std::uint32_t cell, const VertexAttribute& x,
                            std::span<const VertexAttribute> attributes, std::uint32_t best) const;
  std::uint32_t FirstOfNeighbours(const VertexAttribute& x, std::uint32_t ownCell,
                                  std::span<const VertexAttribute> attributes,
                                  std::uint32_t best) const;
  void Insert(const AttributePlace& place, std::span<const VertexAttribute> attributes);
  void MoveToCrowded(std::uint32_t cell, std::span<const VertexAttribute> attributes);

  std::vector<Entry> table_;  ///< a power of two of entries, open addressing
  /// By the cell's number. Cells are numbered in the order of first use, so that neighbours in a
  /// mesh are neighbours in memory.
  GrowableArray<Chain> chains_;
  GrowableArray<std::uint32_t> older_;  ///< per attribute the next of its chain, index + 1, or 0
  CrowdedAttributes crowded_;           ///< the attributes of all crowded cells
  std::size_t distinct_ = 0;            ///< no two of so many first attributes match
};

}  // namespace mapexport
