// Finds the vertex that another one is welded into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// A hash grid over vertices that are added one after the other. The chain of a cell starts with
/// the newest vertex: the first hit is the chain's best, and a chain ends at the best hit so far.
/// Cells are wide at first, so that most queries look into one; they are narrowed when vertices
/// crowd into them. A query looks into the vertex's own cell first and so comes at most as far back
/// as the last vertex in the same fraction of a cell, since all within such a fraction are near
/// each other. A vertex is thus passed over once per fraction around it, not once per query: the
/// time is linear in the vertices, however they lie.
class WeldGrid {
 public:
  /// For up to `capacity` vertices. Two of them are near each other when their squared distance,
  /// computed in 32-bit floats, is less than `squaredDistance`, which is positive.
  WeldGrid(std::size_t capacity, float squaredDistance);

  /// Adds a vertex and returns the index of the newest earlier one that is near it, its own index
  /// when there is none. Coordinates that are not finite are near nothing.
  std::uint32_t Add(const Point3& vertex);

 private:
  /// The cells of an axis: whole numbers, of equal width around the origin. Far out, where
  /// neighbouring floats lie further apart than the reach, every float has a cell of its own, so
  /// that nothing crowds into the outermost cell.
  class Axis {
   public:
    struct Range {
      std::int64_t own;    ///< the cell of the coordinate itself
      std::int64_t first;  ///< of the cells that coordinates within the reach can lie in
      std::int64_t last;
    };

    /// `reach` is what two near coordinates differ by less than, `widthInReaches` a cell's width.
    Axis(float reach, int widthInReaches);

    Range CellsAround(float x) const;

   private:
    double perUnit_;     ///< cells per unit
    double farOut_;      ///< the magnitude from which every float has its own cell
    double borderland_;  ///< of a cell, the part from which the reach can leave it
  };

  /// Where a vertex is.
  struct Place {
    Axis::Range x;
    Axis::Range y;
    Axis::Range z;
    std::uint32_t* head;  ///< of the chain of its own cell
  };

  /// One vertex and, as index + 1, the next older one of its chain; 0 ends a chain.
  struct Slot {
    Point3 position;
    std::uint32_t older;
  };

  Place PlaceOf(const Point3& vertex);
  std::uint32_t& HeadOf(std::int64_t x, std::int64_t y, std::int64_t z);
  std::uint32_t NewestNear(const Point3& vertex, const Place& place);
  std::uint32_t NewestOfChain(std::uint32_t head, const Point3& vertex, std::uint32_t best);
  void Link(std::uint32_t index, const Place& place);
  void Narrow();

  float squaredDistance_;
  float reach_;
  int width_;  ///< of a cell, in reaches
  Axis axis_;  ///< the same for all three
  int hashShift_;
  std::vector<std::uint32_t> heads_;  ///< a power of two of chains: the newest vertex + 1, or 0
  std::vector<Slot> slots_;
  std::int64_t allowance_;  ///< how many more tests are fair before the cells are narrowed
};

}  // namespace mapexport
