// Finds a match among many attributes at nearly the same position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {

/// The attributes of the crowded cells of AttributeIndex, in small cells: 1/20 unit of position and
/// texture coordinates, 1/8 of normal. The hash of these nine coordinates and the material selects
/// a chain. A chain is in ascending order, so that its first match is its least. All values that
/// are compared are finite.
class CrowdedAttributes {
 public:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  /// The least of `best` and of the attributes in the table that match `x`.
  std::uint32_t FindFirst(const VertexAttribute& x, std::span<const VertexAttribute> attributes,
                          std::uint32_t best) const;

  /// Adds attribute `i`, which is not yet in the table.
  void Insert(std::uint32_t i, std::span<const VertexAttribute> attributes);

 private:
  struct Entry {
    std::uint32_t attribute;
    std::uint32_t hash;  ///< of its cell; several cells can share a chain
    std::uint32_t next;  ///< entry of the chain, kNone at its end
  };
  struct Chain {  // of entries
    std::uint32_t first = kNone;
    std::uint32_t last = kNone;
  };

  void Link(std::uint32_t entry);
  void Grow();

  std::vector<Chain> chains_;  ///< a power of two of them, or none
  std::vector<Entry> entries_;
};

}  // namespace mapexport
