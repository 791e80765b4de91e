// A list of points without bit-identical duplicates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// Different points in the order in which they were first added. 0 and -0 are different, a NaN
/// equals itself. Adding takes constant time on average.
class PointTable {
 public:
  /// The index of `point` in the list; it is added when it isn't there.
  std::uint32_t Add(const Point3& point);
  std::vector<Point3> TakePoints() { return std::move(points_); }

 private:
  std::size_t FreeSlotOrMatch(const Point3& point) const;
  void Grow();

  std::vector<Point3> points_;
  std::vector<std::uint32_t> slots_;  // index into points_ plus 1, 0: free; a power of two of them
};

}  // namespace mapexport
