// Which numbers are finite as 32-bit floats.
#pragma once

#include <cmath>

namespace mapexport {

/// Whether the three coordinates of `point` (x, y, z) are finite.
template <class Point>
bool IsFinite(const Point& point) {
  return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

/// The least double that rounds to an infinite float: halfway between the largest float and 2^128,
/// the tie going to the even one.
inline constexpr double kFloatOverflow = 0x1.ffffffp127;

}  // namespace mapexport
