// The least work of finding equal vertices: one insertion into a hash table each.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// For each vertex the first one with the same bits, by a table with open addressing that is at
/// most half full. The table holds only indices; the vertices themselves are compared.
inline std::unique_ptr<std::uint32_t[]> FirstEqualVertices(std::span<const Point3> vertices) {
  const std::size_t size = std::bit_ceil(2 * vertices.size() + 1);
  const int shift = 64 - std::countr_zero(size);
  std::vector<std::uint32_t> table(size, 0);  // an index + 1, or 0
  std::unique_ptr<std::uint32_t[]> first(new std::uint32_t[vertices.size()]);
  const auto bitsOf = [](const Point3& p) {
    return std::bit_cast<std::array<std::uint32_t, 3>>(p);
  };
  for (std::uint32_t i = 0; i < vertices.size(); ++i) {
    const auto bits = bitsOf(vertices[i]);
    std::uint64_t hash = (std::uint64_t{bits[0]} << 32 | bits[1]) * 0x9E3779B97F4A7C15u;
    hash = (hash ^ (hash >> 32) ^ bits[2]) * 0xD6E8FEB86659FD93u;
    std::size_t place = hash >> shift;
    while (table[place] != 0 && bitsOf(vertices[table[place] - 1]) != bits) {
      place = (place + 1) & (size - 1);
    }
    if (table[place] == 0) table[place] = i + 1;
    first[i] = table[place] - 1;
  }
  return first;
}

}  // namespace mapexport
