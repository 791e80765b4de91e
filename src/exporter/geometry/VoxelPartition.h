// Sorts a group's faces into the cells of a voxel grid.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/base/RandomGenerator.h"
#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Most voxels on one axis.
inline constexpr std::int32_t kMaxVoxelsPerAxis = 2097152;

/// A cell of a voxel grid, per axis 0 to the number of cells - 1.
using VoxelCell = std::array<std::int32_t, 3>;

/// nx x ny x nz equal cells over a group's bounds.
struct VoxelGrid {
  /// The grid with cells of edge about `voxelSize`: ceil(extent / voxelSize) per axis, at least 1
  /// and at most kMaxVoxelsPerAxis; 1 where that quotient is not finite.
  VoxelGrid(const GeometryGroup& group, float voxelSize);

  /// The cell a point lies in; the nearest one for a point outside, cell 0 on a flat axis and for
  /// NaN.
  VoxelCell CellOf(const Point3& p) const;
  /// The same on one axis.
  std::int32_t CellOf(float coordinate, std::size_t axis) const;

  Point3 boundsMin;
  Point3 cellSize;
  std::array<std::int32_t, 3> counts{};
};

/// The faces of a group by cell. Empty cells take no memory.
struct VoxelPartition {
  std::vector<std::uint32_t> faces;   ///< face indices, cell by cell; ascending within a cell
  std::vector<std::uint32_t> starts;  ///< where each cell's faces begin in `faces`, and their end

  std::size_t CellCount() const { return starts.size() - 1; }
  /// The faces of the `i`-th cell that has any; x-major order: x outermost, then y, then z.
  std::span<const std::uint32_t> FacesOf(std::size_t i) const {
    return std::span(faces).subspan(starts[i], starts[i + 1] - starts[i]);
  }
};

/// Assigns every face, drawn or not, to one cell. A face in one cell goes there; a face that spans
/// several goes where most of 10 random points on it lie, the first such cell in x-major order.
/// Random numbers are drawn in face order, for spanning faces only. The vertex indices of an
/// undrawn face are indices into `group.collisionPoints`. Literal form: DenseVoxels in
/// tests/reference/LiteralGeometry.h.
VoxelPartition BuildVoxelPartition(const GeometryGroup& group, const VoxelGrid& grid,
                                   RandomGenerator& random);

}  // namespace mapexport
