#include "geometry/VoxelPartition.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace mapexport {
namespace {

constexpr int kVotes = 10;

std::int32_t CellCount(float extent, float voxelSize) {
  const float count = std::ceil(extent / voxelSize);
  if (!std::isfinite(count)) return 1;
  return static_cast<std::int32_t>(std::clamp(count, 1.0f, static_cast<float>(kMaxVoxelsPerAxis)));
}

std::int32_t CellOnAxis(float p, float boundsMin, float cellSize, std::int32_t count) {
  if (cellSize == 0.0f) return 0;
  const float cell = (p - boundsMin) / cellSize;
  if (std::isnan(cell)) return 0;
  return static_cast<std::int32_t>(std::clamp(cell, 0.0f, static_cast<float>(count - 1)));
}

/// Orders cells with x outermost, then y, then z.
std::uint64_t XMajorKey(const VoxelCell& cell) {
  static_assert(kMaxVoxelsPerAxis <= (1 << 21));
  return (static_cast<std::uint64_t>(cell[0]) << 42) | (static_cast<std::uint64_t>(cell[1]) << 21) |
         static_cast<std::uint64_t>(cell[2]);
}

struct CellBox {
  VoxelCell lo;
  VoxelCell hi;
};

CellBox BoxOf(const VoxelGrid& grid, const std::array<Point3, 3>& corners) {
  CellBox box{grid.CellOf(corners[0]), {}};
  box.hi = box.lo;
  for (std::size_t k = 1; k < 3; ++k) {
    const VoxelCell cell = grid.CellOf(corners[k]);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      box.lo[axis] = std::min(box.lo[axis], cell[axis]);
      box.hi[axis] = std::max(box.hi[axis], cell[axis]);
    }
  }
  return box;
}

Point3 RandomPoint(const std::array<Point3, 3>& corners, RandomGenerator& random) {
  float r1 = random.Uniform(0.0f, 1.0f);
  float r2 = random.Uniform(0.0f, 1.0f);
  if (r1 + r2 > 1.0f) {
    r1 = 1.0f - r1;
    r2 = 1.0f - r2;
  }
  return corners[0] * (1.0f - r1 - r2) + corners[1] * r1 + corners[2] * r2;
}

/// The cell of the box with the most votes. Rounding can put a point outside the box: it counts for
/// the nearest cell of the box.
std::uint64_t VoteForCell(const VoxelGrid& grid, const CellBox& box,
                          const std::array<Point3, 3>& corners, RandomGenerator& random) {
  std::array<std::uint64_t, kVotes> votes;
  for (std::uint64_t& vote : votes) {
    VoxelCell cell = grid.CellOf(RandomPoint(corners, random));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      cell[axis] = std::clamp(cell[axis], box.lo[axis], box.hi[axis]);
    }
    vote = XMajorKey(cell);
  }
  std::ranges::sort(votes);
  std::uint64_t winner = votes[0];
  std::ptrdiff_t most = 0;
  for (auto first = votes.begin(); first != votes.end();) {
    const auto last = std::upper_bound(first, votes.end(), *first);
    if (last - first > most) {
      most = last - first;
      winner = *first;
    }
    first = last;
  }
  return winner;
}

}  // namespace

VoxelGrid::VoxelGrid(const GeometryGroup& group, float voxelSize) : boundsMin(group.boundsMin) {
  const Point3 extent = group.boundsMax - group.boundsMin;
  counts = {CellCount(extent.x, voxelSize), CellCount(extent.y, voxelSize),
            CellCount(extent.z, voxelSize)};
  cellSize = {extent.x / static_cast<float>(counts[0]), extent.y / static_cast<float>(counts[1]),
              extent.z / static_cast<float>(counts[2])};
}

VoxelCell VoxelGrid::CellOf(const Point3& p) const {
  return {CellOnAxis(p.x, boundsMin.x, cellSize.x, counts[0]),
          CellOnAxis(p.y, boundsMin.y, cellSize.y, counts[1]),
          CellOnAxis(p.z, boundsMin.z, cellSize.z, counts[2])};
}

VoxelPartition BuildVoxelPartition(const GeometryGroup& group, const VoxelGrid& grid,
                                   RandomGenerator& random) {
  std::vector<std::pair<std::uint64_t, std::uint32_t>> placed;  // cell and face
  placed.reserve(group.faces.size());
  for (std::uint32_t f = 0; f < group.faces.size(); ++f) {
    const GroupFace& face = group.faces[f];
    std::array<Point3, 3> corners;
    for (std::size_t k = 0; k < 3; ++k) {
      corners[k] = face.drawn != 0 ? group.vertices[face.v[k]] : group.collisionPoints[face.v[k]];
    }
    const CellBox box = BoxOf(grid, corners);
    placed.emplace_back(
        box.lo == box.hi ? XMajorKey(box.lo) : VoteForCell(grid, box, corners, random), f);
  }
  if (!std::ranges::is_sorted(placed)) std::ranges::sort(placed);

  VoxelPartition partition;
  partition.faces.reserve(placed.size());
  for (std::size_t i = 0; i < placed.size(); ++i) {
    if (i == 0 || placed[i].first != placed[i - 1].first) {
      partition.starts.push_back(static_cast<std::uint32_t>(i));
    }
    partition.faces.push_back(placed[i].second);
  }
  partition.starts.push_back(static_cast<std::uint32_t>(placed.size()));
  return partition;
}

}  // namespace mapexport
