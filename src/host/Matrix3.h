// The host's affine transform.
#pragma once

#include <array>

#include "host/Point3.h"

namespace mapexport {

/// Four rows of three floats used with row vectors: rows 0 to 2 are the images of the x, y and z
/// axes, row 3 is the translation.
struct Matrix3 {
  std::array<Point3, 4> rows{Point3{1, 0, 0}, Point3{0, 1, 0}, Point3{0, 0, 1}, Point3{0, 0, 0}};

  /// Makes this the identity transform.
  void IdentityMatrix() { *this = Matrix3{}; }

  friend bool operator==(const Matrix3&, const Matrix3&) = default;
};

/// `p` as a point: x*r0 + y*r1 + z*r2 + r3 per component, summed from left to right. The identity
/// is applied like any other transform.
inline Point3 operator*(const Point3& p, const Matrix3& m) {
  const auto& r = m.rows;
  return {p.x * r[0].x + p.y * r[1].x + p.z * r[2].x + r[3].x,
          p.x * r[0].y + p.y * r[1].y + p.z * r[2].y + r[3].y,
          p.x * r[0].z + p.y * r[1].z + p.z * r[2].z + r[3].z};
}

}  // namespace mapexport
