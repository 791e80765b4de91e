// The attributes at places where there are many of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {

/// A hash table of attributes by position, normal, texture coordinates and material: thousands of
/// different corners at one point are told apart. A chain is in ascending order, so that its first
/// match is its least one. Attributes are finite in all that is compared.
class CrowdedAttributes {
 public:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  /// The least of `best` and the attributes in the table that match `x`.
  std::uint32_t FindFirst(const VertexAttribute& x, std::span<const VertexAttribute> attributes,
                          std::uint32_t best) const;

  /// Takes in attribute `i`, which is not yet in the table.
  void Insert(std::uint32_t i, std::span<const VertexAttribute> attributes);

 private:
  struct Entry {
    std::uint32_t attribute;
    std::uint32_t hash;  ///< of the cell of its values, the low half
    std::uint32_t next;  ///< of the chain, kNone at its end
  };
  struct Chain {
    std::uint32_t first = kNone;
    std::uint32_t last = kNone;
  };

  void Link(std::uint32_t entry);
  void Grow();

  std::vector<Chain> chains_;  ///< a power of two of them, or none
  std::vector<Entry> entries_;
};

}  // namespace mapexport
