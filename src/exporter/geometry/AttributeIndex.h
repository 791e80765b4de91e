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

/// Where the attributes at one position are looked up. Corners at one vertex share it.
struct AttributePlace {
  enum class Reach : std::uint32_t {
    kNone,     ///< the position is not finite and matches nothing
    kOneCell,  ///< all that can match lies in the position's own cell
    kSeveralCells
  };
  Reach reach = Reach::kNone;
  std::uint32_t cell = 0;  ///< the position's own one
};

/// A hash grid over the attributes of a group. Positions fall into cells much larger than the
/// matching tolerance, with a chain of attributes each; where many attributes crowd into one cell,
/// a table tells them apart by normal and texture coordinates as well. The literal comparison
/// decides every candidate: the grid only leaves out what can't match.
class AttributeIndex {
 public:
  static constexpr std::uint32_t kNone = CrowdedAttributes::kNone;

  /// The place of a position, whose cell is added if it is new. Good until Clear or Release.
  AttributePlace PlaceOf(const Point3& position);
  /// The places of many, in their order.
  std::vector<AttributePlace> PlacesOf(std::span<const Point3> positions);

  /// The least i with AttributesMatch(x, attributes[i]), kNone when there is none. The index must
  /// cover all of `attributes`, and `place` be that of the position of `x`.
  std::uint32_t FindFirst(const VertexAttribute& x, const AttributePlace& place,
                          std::span<const VertexAttribute> attributes) const;

  /// Takes in attributes[Count()], the last one, at `place`. It was looked for, and matches none.
  void AddDistinct(const AttributePlace& place, std::span<const VertexAttribute> attributes);

  /// Takes in attributes[Count()] and all that follow it, whatever they match. Where attributes
  /// were taken away from the end it starts anew.
  void Update(std::span<const VertexAttribute> attributes);

  /// How many attributes are in the index.
  std::size_t Count() const { return older_.size(); }

  /// Whether it is known that no two of the first `count` attributes match.
  bool AllDistinct(std::size_t count) const { return distinct_ >= count; }

  /// Forgets everything. To be called when attributes were changed or removed otherwise.
  void Clear();
  /// Gives the memory back but keeps what AllDistinct knows.
  void Release();

 private:
  /// An entry of the hash table of cells. Cells of one hash are one cell.
  struct Entry {
    std::uint32_t hash;
    std::uint32_t cell;  ///< its index + 1; 0: the entry is free
  };
  /// The attributes of a cell.
  struct Chain {
    std::uint32_t newest;  ///< as index + 1, or 0, or kCrowdedCell
    std::uint32_t length;
  };
  /// Stands for the attributes of a cell that are told apart elsewhere.
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
  /// Per cell, in the order in which they were first met, which keeps what is looked up after each
  /// other close together.
  GrowableArray<Chain> chains_;
  GrowableArray<std::uint32_t> older_;  ///< per attribute the next of its chain as index + 1, or 0
  CrowdedAttributes crowded_;           ///< the attributes of the cells that became crowded
  std::size_t distinct_ = 0;            ///< attributes of which no two match, from the first one on
};

}  // namespace mapexport
