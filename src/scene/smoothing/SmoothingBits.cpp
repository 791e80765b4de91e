// One bit of the host's smoothing groups for each group of faces.
#include "scene/smoothing/SmoothingBits.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <span>
#include <utility>

namespace mapexport {
namespace {

/// The lowest bit that isn't `taken`; when all are, one that differs from group to group.
unsigned ChooseBit(std::uint32_t taken, std::size_t group) {
  constexpr std::uint32_t kNeverUsed = (1u << kFirstSmoothingBit) - 1;
  const auto bit = static_cast<unsigned>(std::countr_one(taken | kNeverUsed));
  if (bit <= kLastSmoothingBit) return bit;
  constexpr unsigned kBits = kLastSmoothingBit - kFirstSmoothingBit + 1;
  return kFirstSmoothingBit + static_cast<unsigned>(group % kBits);
}

/// The faces in the order of their groups, those of one group in their own order. Flat ones are
/// left out.
std::vector<std::uint32_t> OrderByGroup(const std::vector<std::uint32_t>& groupOf) {
  std::vector<std::uint32_t> places;  // of each group: its size, then where its next face goes
  for (const std::uint32_t group : groupOf) {
    if (group == kFlatFace) continue;
    if (group >= places.size()) places.resize(std::size_t{group} + 1, 0);
    ++places[group];
  }
  std::uint32_t total = 0;
  for (std::uint32_t& place : places) total += std::exchange(place, total);
  std::vector<std::uint32_t> order(total);
  for (std::uint32_t face = 0; face < groupOf.size(); ++face) {
    if (groupOf[face] != kFlatFace) order[places[groupOf[face]]++] = face;
  }
  return order;
}

}  // namespace

void AssignSmoothingBits(Mesh& mesh, const std::vector<std::uint32_t>& groupOf) {
  const std::vector<std::uint32_t> order = OrderByGroup(groupOf);

  for (Face& face : mesh.faces) face.smGroup = 0;
  std::vector<std::uint32_t> bitsAtVertex(mesh.verts.size(), 0);
  std::size_t groupCount = 0;
  for (auto begin = order.begin(); begin != order.end();) {
    const std::uint32_t group = groupOf[*begin];
    const auto end = std::find_if(begin, order.end(),
                                  [&](std::uint32_t face) { return groupOf[face] != group; });
    const std::span<const std::uint32_t> faces(begin, end);
    begin = end;
    std::uint32_t taken = 0;
    for (const std::uint32_t face : faces) {
      for (const std::uint32_t vertex : mesh.faces[face].v) taken |= bitsAtVertex[vertex];
    }
    const std::uint32_t bits = 1u << ChooseBit(taken, groupCount++);
    for (const std::uint32_t face : faces) {
      mesh.faces[face].smGroup = bits;
      for (const std::uint32_t vertex : mesh.faces[face].v) bitsAtVertex[vertex] |= bits;
    }
  }
}

}  // namespace mapexport
