#include "exporter/geometry/ConvertCoordinates.h"

#include "exporter/base/ProcessState.h"

namespace mapexport {

void ConvertPoint(Point3& p) {
  ConvertPoint(p, State().options.coordinateSystem);
}

void ConvertTextureCoordinates(Point3& uvw) {
  ConvertTextureCoordinates(uvw, State().options.textureCoordinateMode);
}

float TransformParity(const Matrix3& m) {
  const auto& r = m.rows;
  return r[0].x * (r[1].y * r[2].z - r[1].z * r[2].y) -
         r[0].y * (r[1].x * r[2].z - r[1].z * r[2].x) +
         r[0].z * (r[1].x * r[2].y - r[1].y * r[2].x);
}

}  // namespace mapexport
