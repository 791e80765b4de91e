// Finds the first attribute that matches another without scanning them all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "geometry/VertexAttribute.h"

namespace mapexport {

/// A hash grid over the attributes of a group. Positions fall into cells much larger than the
/// matching tolerance; a chain of attributes per cell is kept in ascending order, so that the first
/// match of a chain is its least one, and the least over the cells that the tolerance touches is
/// the answer. Where many attributes crowd into one cell, a second grid tells them apart by normal
/// and texture coordinates as well. The literal comparison decides every candidate: the grid only
/// leaves out what can't match.
class AttributeIndex {
 public:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  /// The least i with AttributesMatch(x, attributes[i]), kNone when there is none. The index must
  /// cover all of `attributes`.
  std::uint32_t FindFirst(const VertexAttribute& x,
                          std::span<const VertexAttribute> attributes) const;

  /// Takes in attributes[Count()] and all that follow it.
  void Update(std::span<const VertexAttribute> attributes);

  /// How many attributes are in the index.
  std::size_t Count() const { return next_.size(); }

  /// Forgets everything. To be called when attributes were changed or removed.
  void Clear();

 private:
  /// A hash table of ascending chains; an attribute is in one table's chain only.
  struct Table {
    struct Chain {
      std::uint32_t first = kNone;
      std::uint32_t last = kNone;
      std::uint32_t length = 0;
    };
    std::vector<Chain> chains;  ///< a power of two of them, or none
    std::size_t entries = 0;

    Chain& At(std::uint64_t hash) { return chains[hash & (chains.size() - 1)]; }
    const Chain& At(std::uint64_t hash) const { return chains[hash & (chains.size() - 1)]; }
  };

  void Insert(std::uint32_t i, std::span<const VertexAttribute> attributes);
  void InsertFine(std::uint32_t i, std::span<const VertexAttribute> attributes);
  void GrowFine(std::span<const VertexAttribute> attributes);
  /// Puts `i` into its ascending place, which for all but moved entries is the end.
  void Append(Table::Chain& chain, std::uint32_t i);
  void Rebuild(std::span<const VertexAttribute> attributes);
  std::uint32_t FirstOfChain(const Table::Chain& chain, const VertexAttribute& x,
                             std::span<const VertexAttribute> attributes, std::uint32_t best) const;

  Table coarse_;                     ///< by position
  Table fine_;                       ///< by position, normal, uvw and material
  std::vector<std::uint32_t> next_;  ///< the next attribute of the same chain, per attribute
};

}  // namespace mapexport
