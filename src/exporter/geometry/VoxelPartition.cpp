#include "exporter/geometry/VoxelPartition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

namespace mapexport {
namespace {

constexpr std::size_t kVotes = 10;
constexpr std::int64_t kFewCells = 64;  // whose votes are counted in place
// A grid with at most so many cells is held in memory, with 32-bit cell numbers.
constexpr std::uint64_t kCellsPerFace = 4;
constexpr std::uint64_t kMostCounted = std::numeric_limits<std::uint32_t>::max();

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

float AxisOf(const Point3& p, std::size_t axis) {
  return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
}

/// A box of cells.
struct CellBox {
  VoxelCell lo;
  VoxelCell hi;
};

CellBox BoxOf(const std::array<VoxelCell, 3>& corners) {
  CellBox box{corners[0], corners[0]};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (std::size_t k = 1; k < 3; ++k) {
      box.lo[axis] = std::min(box.lo[axis], corners[k][axis]);
      box.hi[axis] = std::max(box.hi[axis], corners[k][axis]);
    }
  }
  return box;
}

/// The cells of random points on a triangle. Rounding can put a point outside the box of the
/// triangle's cells: it counts for the nearest cell of the box.
std::array<VoxelCell, kVotes> RandomCells(const VoxelGrid& grid, const CellBox& box,
                                          const std::array<Point3, 3>& corners,
                                          RandomGenerator& random) {
  std::array<std::array<float, 3>, kVotes> weights;
  for (auto& weight : weights) {
    const float r1 = random.Uniform(0.0f, 1.0f);
    const float r2 = random.Uniform(0.0f, 1.0f);
    const bool beyond = r1 + r2 > 1.0f;
    weight[1] = beyond ? 1.0f - r1 : r1;
    weight[2] = beyond ? 1.0f - r2 : r2;
    weight[0] = 1.0f - weight[1] - weight[2];
  }
  std::array<VoxelCell, kVotes> cells;
  cells.fill(box.lo);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (box.lo[axis] == box.hi[axis]) continue;
    const std::array<float, 3> p{AxisOf(corners[0], axis), AxisOf(corners[1], axis),
                                 AxisOf(corners[2], axis)};
    for (std::size_t i = 0; i < kVotes; ++i) {
      const float point = p[0] * weights[i][0] + p[1] * weights[i][1] + p[2] * weights[i][2];
      const std::int32_t cell = CellOnAxis(point, AxisOf(grid.boundsMin, axis),
                                           AxisOf(grid.cellSize, axis), grid.counts[axis]);
      cells[i][axis] = std::clamp(cell, box.lo[axis], box.hi[axis]);
    }
  }
  return cells;
}

/// The cell with the most votes; of several, the first in x-major order.
VoxelCell Winner(std::array<VoxelCell, kVotes> votes) {
  std::ranges::sort(votes);
  VoxelCell winner = votes[0];
  std::size_t most = 0;
  for (std::size_t first = 0; first < kVotes;) {
    std::size_t end = first + 1;
    while (end < kVotes && votes[end] == votes[first]) ++end;
    if (end - first > most) {
      most = end - first;
      winner = votes[first];
    }
    first = end;
  }
  return winner;
}

/// The same for votes within a small box, by a counter per cell.
VoxelCell WinnerOfFew(const std::array<VoxelCell, kVotes>& votes, const CellBox& box,
                      const std::array<std::int64_t, 3>& n) {
  std::array<std::uint8_t, kFewCells> counts{};
  const auto ny = static_cast<std::int32_t>(n[1]);
  const auto nz = static_cast<std::int32_t>(n[2]);
  for (const VoxelCell& vote : votes) {
    const std::int32_t index =
        ((vote[0] - box.lo[0]) * ny + vote[1] - box.lo[1]) * nz + vote[2] - box.lo[2];
    ++counts[static_cast<std::size_t>(index)];
  }
  const auto end = counts.begin() + n[0] * n[1] * n[2];
  const auto index =
      static_cast<std::int32_t>(std::max_element(counts.begin(), end) - counts.begin());
  return {box.lo[0] + index / (ny * nz), box.lo[1] + index / nz % ny, box.lo[2] + index % nz};
}

VoxelCell VoteForCell(const VoxelGrid& grid, const CellBox& box,
                      const std::array<Point3, 3>& corners, RandomGenerator& random) {
  const std::array<VoxelCell, kVotes> votes = RandomCells(grid, box, corners, random);
  std::array<std::int64_t, 3> n;
  for (std::size_t axis = 0; axis < 3; ++axis) n[axis] = box.hi[axis] - box.lo[axis] + 1;
  if (n[0] * n[1] > kFewCells || n[0] * n[1] * n[2] > kFewCells) return Winner(votes);
  return WinnerOfFew(votes, box, n);
}

/// The number of a cell, x-major: x outermost, then y, then z.
std::uint64_t NumberOf(const VoxelGrid& grid, const VoxelCell& cell) {
  static_assert(kMaxVoxelsPerAxis <= 1 << 21);
  const auto number = [](std::int32_t i) { return static_cast<std::uint64_t>(i); };
  return (number(cell[0]) * number(grid.counts[1]) + number(cell[1])) * number(grid.counts[2]) +
         number(cell[2]);
}

/// The numbers of the points' cells.
template <typename Number>
std::vector<Number> CellsOf(const VoxelGrid& grid, std::span<const Point3> points) {
  std::vector<Number> cells;
  cells.reserve(points.size());
  for (const Point3& p : points) {
    cells.push_back(static_cast<Number>(NumberOf(grid, grid.CellOf(p))));
  }
  return cells;
}

/// Per face the number of its cell. `Number` can hold the number of every cell of the grid.
template <typename Number>
std::vector<Number> AssignFaces(const GeometryGroup& group, const VoxelGrid& grid,
                                RandomGenerator& random) {
  const std::span<const Point3> vertices(group.vertices.data(), group.vertices.size());
  const std::vector<Number> vertexCells = CellsOf<Number>(grid, vertices);
  const std::vector<Number> pointCells = CellsOf<Number>(grid, group.collisionPoints);
  std::vector<Number> assigned;
  assigned.reserve(group.faces.size());
  for (const GroupFace& face : group.faces) {
    const bool drawn = face.drawn != 0;
    const std::vector<Number>& cells = drawn ? vertexCells : pointCells;
    const Number first = cells[face.v[0]];
    if (cells[face.v[1]] == first && cells[face.v[2]] == first) {
      assigned.push_back(first);
      continue;
    }
    const auto& points = drawn ? vertices : std::span<const Point3>(group.collisionPoints);
    const std::array<Point3, 3> corners{points[face.v[0]], points[face.v[1]], points[face.v[2]]};
    const CellBox box =
        BoxOf({grid.CellOf(corners[0]), grid.CellOf(corners[1]), grid.CellOf(corners[2])});
    const VoxelCell cell = VoteForCell(grid, box, corners, random);
    assigned.push_back(static_cast<Number>(NumberOf(grid, cell)));
  }
  return assigned;
}

/// The partition by counting the faces of each of `cellCount` cells.
VoxelPartition CountCells(std::span<const std::uint32_t> assigned, std::size_t cellCount) {
  std::vector<std::uint32_t> ends(cellCount, 0);
  for (const std::uint32_t cell : assigned) ++ends[cell];
  VoxelPartition partition;
  std::uint32_t end = 0;
  for (std::uint32_t& count : ends) {
    if (count != 0) partition.starts.push_back(end);
    end += count;
    count = end;
  }
  partition.starts.push_back(end);
  partition.faces.resize(assigned.size());
  for (auto f = static_cast<std::uint32_t>(assigned.size()); f-- > 0;) {
    partition.faces[--ends[assigned[f]]] = f;
  }
  return partition;
}

/// The same by sorting.
VoxelPartition SortCells(std::span<const std::uint64_t> assigned) {
  std::vector<std::pair<std::uint64_t, std::uint32_t>> placed;  // cell and face
  placed.reserve(assigned.size());
  for (std::uint32_t f = 0; f < assigned.size(); ++f) placed.emplace_back(assigned[f], f);
  std::ranges::sort(placed);
  VoxelPartition partition;
  partition.faces.reserve(placed.size());
  for (std::uint32_t i = 0; i < placed.size(); ++i) {
    if (i == 0 || placed[i].first != placed[i - 1].first) partition.starts.push_back(i);
    partition.faces.push_back(placed[i].second);
  }
  partition.starts.push_back(static_cast<std::uint32_t>(placed.size()));
  return partition;
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

std::int32_t VoxelGrid::CellOf(float coordinate, std::size_t axis) const {
  return CellOnAxis(coordinate, AxisOf(boundsMin, axis), AxisOf(cellSize, axis), counts[axis]);
}

VoxelPartition BuildVoxelPartition(const GeometryGroup& group, const VoxelGrid& grid,
                                   RandomGenerator& random) {
  const VoxelCell last{grid.counts[0] - 1, grid.counts[1] - 1, grid.counts[2] - 1};
  const std::uint64_t cellCount = NumberOf(grid, last) + 1;
  // A grid with few cells per face is cheap to hold; others can have any size.
  if (cellCount <= kCellsPerFace * group.faces.size() + 1 && cellCount <= kMostCounted) {
    return CountCells(AssignFaces<std::uint32_t>(group, grid, random), cellCount);
  }
  return SortCells(AssignFaces<std::uint64_t>(group, grid, random));
}

}  // namespace mapexport
