// The host's point and vector value: three 32-bit floats, with the operations the exporter relies
// on.
#pragma once

#include <cmath>

namespace mapexport {

/// A point or a vector. Every operation is done in 32-bit floats, one rounding per operation, in
/// the order written here; -0 is kept.
struct Point3 {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;

  friend bool operator==(const Point3&, const Point3&) = default;
};

inline Point3 operator+(const Point3& a, const Point3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Point3 operator-(const Point3& a, const Point3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Point3 operator-(const Point3& a) {
  return {-a.x, -a.y, -a.z};
}

inline Point3 operator*(const Point3& a, float factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}

inline Point3 operator/(const Point3& a, float divisor) {
  return {a.x / divisor, a.y / divisor, a.z / divisor};
}

/// Dot product, summed x, y, z from left to right.
inline float DotProd(const Point3& a, const Point3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Cross product a x b.
inline Point3 CrossProd(const Point3& a, const Point3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Euclidean length; 0 when the squares underflow.
inline float Length(const Point3& a) {
  return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

/// `a` divided by its length; (0, 0, 0) when that length comes out as 0.
inline Point3 Normalize(const Point3& a) {
  const float length = Length(a);
  if (length == 0.0f) return {};
  return a / length;
}

}  // namespace mapexport
