// From the host's right-handed, z-up world into the coordinates that the options ask for.
#pragma once

#include <cstdint>

#include "host/Matrix3.h"
#include "host/Point3.h"

namespace mapexport {

/// Converts a world position in place by the coordinate system: 0 (y, z, -x), 1 (-y, x, z),
/// 2 unchanged, 3 (-x, y, z); others unchanged. Winding is not changed.
inline void ConvertPoint(Point3& p, std::int32_t coordinateSystem) {
  switch (coordinateSystem) {
    case 0:
      p = {p.y, p.z, -p.x};
      break;
    case 1:
      p = {-p.y, p.x, p.z};
      break;
    case 3:
      p.x = -p.x;
      break;
    default:
      break;
  }
}

/// Converts u and v in place by the texture coordinate mode: 0 negates v, 1 negates u, 2 both, 3
/// and others none. w stays.
inline void ConvertTextureCoordinates(Point3& uvw, std::int32_t textureCoordinateMode) {
  if (textureCoordinateMode == 1 || textureCoordinateMode == 2) uvw.x = -uvw.x;
  if (textureCoordinateMode == 0 || textureCoordinateMode == 2) uvw.y = -uvw.y;
}

/// Determinant of the 3 x 3 part of a transform; negative when it mirrors.
inline float TransformParity(const Matrix3& m) {
  const auto& r = m.rows;
  return r[0].x * (r[1].y * r[2].z - r[1].z * r[2].y) -
         r[0].y * (r[1].x * r[2].z - r[1].z * r[2].x) +
         r[0].z * (r[1].x * r[2].y - r[1].y * r[2].x);
}

}  // namespace mapexport
