// Polygons cut into triangles.
#include "importer/obj/TriangulatePolygon.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace mapexport {
namespace {

constexpr double kRounding = 1.2e-7;  // of a 32-bit float, relative

struct Flat {
  double x, y;
};

/// Twice the area of the triangle, positive when it runs counter-clockwise.
double Turn(const Flat& a, const Flat& b, const Flat& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// The corners without the axis along which the polygon's area shows most; counter-clockwise unless
/// it has no area.
std::vector<Flat> Flattened(std::span<const Point3> corners) {
  const auto at = [&](std::size_t i) {
    const Point3& p = corners[i];
    return std::array{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
  };
  std::array<double, 3> normal{};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const auto a = at(i);
    const auto b = at(i + 1 == corners.size() ? 0 : i + 1);
    for (std::size_t k = 0; k < 3; ++k) {
      const std::size_t u = (k + 1) % 3;
      const std::size_t v = (k + 2) % 3;
      normal[k] += (a[u] - b[u]) * (a[v] + b[v]);
    }
  }
  std::size_t axis = 0;
  for (std::size_t k = 1; k < 3; ++k) {
    if (std::abs(normal[k]) > std::abs(normal[axis])) axis = k;
  }
  std::vector<Flat> flat(corners.size());
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const auto p = at(i);
    const double x = p[(axis + 1) % 3];
    const double y = p[(axis + 2) % 3];
    flat[i] = normal[axis] < 0 ? Flat{y, x} : Flat{x, y};
  }
  return flat;
}

/// Whether no corner points inwards by more than the rounding of its coordinates.
bool IsConvex(const std::vector<Flat>& flat) {
  double largest = 0;
  for (const Flat& p : flat) largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
  const double rounding = largest * kRounding;
  for (std::size_t i = 0; i < flat.size(); ++i) {
    const Flat& a = flat[i];
    const Flat& b = flat[(i + 1) % flat.size()];
    const Flat& c = flat[(i + 2) % flat.size()];
    const double length =
        std::abs(b.x - a.x) + std::abs(b.y - a.y) + std::abs(c.x - b.x) + std::abs(c.y - b.y);
    if (Turn(a, b, c) < -rounding * length) return false;
  }
  return true;
}

/// Whether the corner `ring[i]` can be cut off: it is convex and no other corner lies in its
/// triangle.
bool IsEar(const std::vector<Flat>& flat, const std::vector<std::uint32_t>& ring, std::size_t i) {
  const std::size_t before = (i + ring.size() - 1) % ring.size();
  const std::size_t after = (i + 1) % ring.size();
  const Flat& a = flat[ring[before]];
  const Flat& b = flat[ring[i]];
  const Flat& c = flat[ring[after]];
  if (Turn(a, b, c) <= 0) return false;
  for (std::size_t k = 0; k < ring.size(); ++k) {
    if (k == before || k == i || k == after) continue;
    const Flat& p = flat[ring[k]];
    const auto isCorner = [&p](const Flat& corner) { return p.x == corner.x && p.y == corner.y; };
    // A corner that another one touches, as where a hole is joined to the outline, is no obstacle.
    if (isCorner(a) || isCorner(b) || isCorner(c)) continue;
    if (Turn(a, b, p) >= 0 && Turn(b, c, p) >= 0 && Turn(c, a, p) >= 0) return false;
  }
  return true;
}

void Fan(const std::vector<std::uint32_t>& ring, std::vector<PolygonTriangle>& triangles) {
  for (std::size_t i = 2; i < ring.size(); ++i)
    triangles.push_back({ring[0], ring[i - 1], ring[i]});
}

}  // namespace

bool TriangulatePolygon(std::span<const Point3> corners, std::vector<PolygonTriangle>& triangles) {
  triangles.clear();
  if (corners.size() == 3) {
    triangles.push_back({0, 1, 2});
    return true;
  }
  std::vector<std::uint32_t> ring(corners.size());
  std::iota(ring.begin(), ring.end(), std::uint32_t{0});
  const std::vector<Flat> flat = Flattened(corners);
  if (IsConvex(flat)) {
    Fan(ring, triangles);
    return true;
  }
  if (corners.size() > kMostConcaveCorners) return false;

  std::size_t at = 0;
  std::size_t tried = 0;
  while (ring.size() > 3 && tried < ring.size()) {
    at %= ring.size();
    if (!IsEar(flat, ring, at)) {
      ++at;
      ++tried;
      continue;
    }
    const std::size_t size = ring.size();
    triangles.push_back({ring[(at + size - 1) % size], ring[at], ring[(at + 1) % size]});
    ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(at));
    tried = 0;
  }
  // What crosses itself has no more ears.
  Fan(ring, triangles);
  return true;
}

}  // namespace mapexport
