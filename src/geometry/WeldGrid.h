// Finds the vertex that another one is welded into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// The cells of one axis of a grid: whole numbers that never decrease as the coordinate grows. They
/// are of equal width around the origin; far out, where neighbouring floats lie further apart than
/// the reach, every float has a cell of its own, so that nothing crowds into the outermost cell.
class WeldCells {
 public:
  struct Range {
    std::int64_t first;
    std::int64_t last;
  };

  /// `reach` is what two coordinates differ by less than, `widthInReaches` the width of a cell.
  WeldCells(float reach, int widthInReaches);

  /// The cell of a finite coordinate.
  std::int64_t CellOf(double x) const;
  /// The cells of all floats that differ from `x` by less than the reach.
  Range CellsAround(float x) const;

 private:
  double reach_;
  double perUnit_;  ///< cells per unit
  double farOut_;   ///< the magnitude from which every float has its own cell
};

/// A hash grid over vertices that are added one after the other. The chain of a cell starts with
/// the newest vertex: the first hit is the chain's best, and a chain ends at the best hit so far.
/// Cells are wide at first, so that most queries look into one; they are narrowed when vertices
/// crowd into them. In the narrowest ones a vertex is passed over a bounded number of times, as all
/// vertices within a fraction of a cell hit each other: the time is linear in the vertices.
class WeldGrid {
 public:
  /// For up to `capacity` vertices. Two of them are near each other when their squared distance,
  /// computed in 32-bit floats, is less than `squaredDistance`, which is positive.
  WeldGrid(std::size_t capacity, float squaredDistance);

  /// Adds a vertex and returns the index of the newest earlier one that is near it, its own index
  /// when there is none. Coordinates that are not finite are near nothing.
  std::uint32_t Add(const Point3& vertex);

 private:
  /// One vertex and, as index + 1, the next older one of its chain; 0 ends a chain.
  struct Slot {
    Point3 position;
    std::uint32_t older;
  };

  std::uint32_t& HeadOf(std::int64_t x, std::int64_t y, std::int64_t z);
  std::uint32_t NewestNear(const Point3& vertex);
  void Link(std::uint32_t index);
  void Narrow();

  float squaredDistance_;
  float reach_;
  int width_;  ///< of a cell, in reaches
  WeldCells cells_;
  int hashShift_;
  std::vector<std::uint32_t> heads_;  ///< a power of two of chains: the newest vertex + 1, or 0
  std::vector<Slot> slots_;
  std::int64_t allowance_;  ///< how many more tests are fair before the cells are narrowed
};

}  // namespace mapexport
