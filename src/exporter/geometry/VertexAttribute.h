// What one corner of a face carries besides its position.
#pragma once

#include <cmath>
#include <cstdint>

#include "exporter/materials/MaterialRecord.h"
#include "host/Point3.h"

namespace mapexport {

/// Normal, texture coordinates and colour of a face corner. Corners that match share one attribute.
struct VertexAttribute {
  Point3 normal;
  Point3 uvw;
  ColourRgba colour{128.0f, 128.0f, 128.0f, 1.0f};  ///< alpha is 1 in every attribute of a group
  std::int32_t reserved = 0;
  Point3 position;            ///< of the corner's vertex when the attribute was made
  std::int32_t material = 0;  ///< the face's material index, -1 for none
};

/// False when a component is NaN or infinite.
inline bool IsFinite(const Point3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Two attributes match when they differ by less than this in every component of normal, uvw and
/// position.
inline constexpr float kAttributeTolerance = 0.01f;

/// Whether every component of the two points differs by less than kAttributeTolerance. NaN and
/// infinities differ from everything.
inline bool PointsMatch(const Point3& a, const Point3& b) {
  return std::fabs(a.x - b.x) < kAttributeTolerance && std::fabs(a.y - b.y) < kAttributeTolerance &&
         std::fabs(a.z - b.z) < kAttributeTolerance;
}

/// Whether two corners can share an attribute. Colour and alpha are not compared.
inline bool AttributesMatch(const VertexAttribute& a, const VertexAttribute& b) {
  return PointsMatch(a.normal, b.normal) && PointsMatch(a.uvw, b.uvw) &&
         PointsMatch(a.position, b.position) && a.reserved == b.reserved &&
         a.material == b.material;
}

}  // namespace mapexport
