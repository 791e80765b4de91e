// One bit of the host's smoothing groups for each group of faces.
#include "importer/rebuild/SmoothingBits.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <span>

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

}  // namespace

void AssignSmoothingBits(Mesh& mesh, const std::vector<std::uint32_t>& groupOf) {
  std::vector<std::uint32_t> order(mesh.faces.size());
  std::iota(order.begin(), order.end(), std::uint32_t{0});
  std::ranges::stable_sort(order, {}, [&](std::uint32_t face) { return groupOf[face]; });

  std::vector<std::uint32_t> bitsAtVertex(mesh.verts.size(), 0);
  std::size_t groupCount = 0;
  for (auto begin = order.begin(); begin != order.end();) {
    const std::uint32_t group = groupOf[*begin];
    const auto end = std::find_if(begin, order.end(),
                                  [&](std::uint32_t face) { return groupOf[face] != group; });
    const std::span<const std::uint32_t> faces(begin, end);
    begin = end;
    std::uint32_t bits = 0;
    if (group != kFlatFace) {
      std::uint32_t taken = 0;
      for (const std::uint32_t face : faces) {
        for (const std::uint32_t vertex : mesh.faces[face].v) taken |= bitsAtVertex[vertex];
      }
      bits = 1u << ChooseBit(taken, groupCount++);
    }
    for (const std::uint32_t face : faces) {
      mesh.faces[face].smGroup = bits;
      for (const std::uint32_t vertex : mesh.faces[face].v) bitsAtVertex[vertex] |= bits;
    }
  }
}

}  // namespace mapexport
