#include "exporter/geometry/ConvertCoordinates.h"

namespace mapexport {

float TransformParity(const Matrix3& m) {
  const auto& r = m.rows;
  return r[0].x * (r[1].y * r[2].z - r[1].z * r[2].y) -
         r[0].y * (r[1].x * r[2].z - r[1].z * r[2].x) +
         r[0].z * (r[1].x * r[2].y - r[1].y * r[2].x);
}

}  // namespace mapexport
