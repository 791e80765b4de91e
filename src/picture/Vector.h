// Directions and points in double precision. Their operations are those that every machine rounds
// alike: no function of a mathematical library but the square root.
#pragma once

#include <cmath>

namespace mapexport {

struct Vector {
  double x = 0;
  double y = 0;
  double z = 0;
};

inline Vector operator+(const Vector& a, const Vector& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator*(const Vector& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
inline double Dot(const Vector& a, const Vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
/// The null vector when `vector` has no direction.
inline Vector Normalised(const Vector& vector) {
  const double length = std::sqrt(Dot(vector, vector));
  return std::isfinite(length) && length > 0 ? vector * (1 / length) : Vector{};
}

}  // namespace mapexport
