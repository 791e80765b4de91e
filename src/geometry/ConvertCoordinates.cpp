#include "geometry/ConvertCoordinates.h"

#include "plugin/state/ProcessState.h"

namespace mapexport {

void ConvertPoint(Point3& p) {
  ConvertPoint(p, State().options.coordinateSystem);
}

void ConvertPoint(Point3& p, std::int32_t coordinateSystem) {
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

void ConvertTextureCoordinates(Point3& uvw) {
  ConvertTextureCoordinates(uvw, State().options.textureCoordinateMode);
}

void ConvertTextureCoordinates(Point3& uvw, std::int32_t textureCoordinateMode) {
  if (textureCoordinateMode == 1 || textureCoordinateMode == 2) uvw.x = -uvw.x;
  if (textureCoordinateMode == 0 || textureCoordinateMode == 2) uvw.y = -uvw.y;
}

float TransformParity(const Matrix3& m) {
  const auto& r = m.rows;
  return r[0].x * (r[1].y * r[2].z - r[1].z * r[2].y) -
         r[0].y * (r[1].x * r[2].z - r[1].z * r[2].x) +
         r[0].z * (r[1].x * r[2].y - r[1].y * r[2].x);
}

}  // namespace mapexport
