// The UV transform of a foreign material's map.
#include "importer/rebuild/TextureTransform.h"

#include <cmath>
#include <numbers>

#include <assimp/material.h>

#include "importer/ReadWithLibrary.h"

namespace mapexport {
namespace {

/// Images of u and v, and of the origin, in double precision.
struct UvMatrix {
  double uu = 1, uv = 0;
  double vu = 0, vv = 1;
  double offsetU = 0, offsetV = 0;
};

/// The library's own meaning: translate, rotate counter-clockwise and then scale, both about the
/// middle.
UvMatrix AboutTheMiddle(const aiUVTransform& stored, double radians) {
  const double c = std::cos(radians);
  const double s = std::sin(radians);
  const double scaleU = static_cast<double>(stored.mScaling.x);
  const double scaleV = static_cast<double>(stored.mScaling.y);
  UvMatrix m{.uu = scaleU * c, .uv = scaleV * s, .vu = -scaleU * s, .vv = scaleV * c};
  const double u = static_cast<double>(stored.mTranslation.x) - 0.5;
  const double v = static_cast<double>(stored.mTranslation.y) - 0.5;
  m.offsetU = 0.5 + u * m.uu + v * m.vu;
  m.offsetV = 0.5 + u * m.uv + v * m.vv;
  return m;
}

/// Scale, rotate counter-clockwise, and translate, of which Blender's FBX files have 1 / scale and
/// -rotation in radians.
UvMatrix AsInBlender(const aiUVTransform& stored) {
  const double c = std::cos(-static_cast<double>(stored.mRotation));
  const double s = std::sin(-static_cast<double>(stored.mRotation));
  const double scaleU = 1 / static_cast<double>(stored.mScaling.x);
  const double scaleV = 1 / static_cast<double>(stored.mScaling.y);
  return {.uu = scaleU * c,
          .uv = scaleU * s,
          .vu = -scaleV * s,
          .vv = scaleV * c,
          .offsetU = static_cast<double>(stored.mTranslation.x),
          .offsetV = static_cast<double>(stored.mTranslation.y)};
}

Point3 Rounded(double u, double v) {
  // The added zero makes +0 of the -0 that a sign change leaves.
  return {static_cast<float>(u + 0.0), static_cast<float>(v + 0.0), 0.0f};
}

}  // namespace

Matrix3 TextureTransform(const aiUVTransform& stored, const LibraryScene& source) {
  const double angle = static_cast<double>(stored.mRotation);
  const double unit = source.format == SourceFormat::kFbx ? std::numbers::pi / 180 : 1.0;
  const UvMatrix m =
      source.isFromBlender ? AsInBlender(stored) : AboutTheMiddle(stored, angle * unit);
  Matrix3 host;
  host.rows[0] = Rounded(m.uu, m.uv);
  host.rows[1] = Rounded(m.vu, m.vv);
  host.rows[3] = Rounded(m.offsetU, m.offsetV);
  return host;
}

}  // namespace mapexport
