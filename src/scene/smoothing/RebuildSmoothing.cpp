// Smoothing groups that give back the look of stored normals.
#include "scene/smoothing/RebuildSmoothing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>

#include "scene/smoothing/SmoothingBits.h"

namespace mapexport {
namespace {

constexpr float kAgreeingDot = 0.9998f;
/// Faces on one edge are compared with this many different ones before them; bounds the work on an
/// edge that thousands of faces share.
constexpr std::size_t kMostWaysAcrossEdge = 16;

/// Far from overflow and underflow, also its product with another such number.
bool IsOrdinary(float square) {
  return square > 1e-6f && square < 1e6f;
}

/// The cosine between vectors whose squares are beyond the range of floats; no number where one of
/// them has no direction.
double PreciseCosine(const Point3& a, const Point3& b) {
  const auto dot = [](const Point3& p, const Point3& q) {
    return double{p.x} * q.x + double{p.y} * q.y + double{p.z} * q.z;
  };
  return dot(a, b) / (std::sqrt(dot(a, a)) * std::sqrt(dot(b, b)));
}

/// Whether the directions are about the same; never with a null vector or numbers that aren't
/// finite.
bool Agree(const Point3& a, const Point3& b) {
  const float aa = DotProd(a, a);
  if (a == b && IsOrdinary(aa)) return true;
  const float bb = DotProd(b, b);
  if (IsOrdinary(aa) && IsOrdinary(bb)) {
    // Mostly it is clear without the roots, whose rounding matters only near the limit.
    constexpr float kNear = 1e-4f;
    constexpr float kSurely = (kAgreeingDot + kNear) * (kAgreeingDot + kNear);
    constexpr float kPerhaps = (kAgreeingDot - kNear) * (kAgreeingDot - kNear);
    const float dot = DotProd(a, b);
    if (dot <= 0.0f || dot * dot < kPerhaps * (aa * bb)) return false;
    if (dot * dot > kSurely * (aa * bb)) return true;
  }
  if (std::isnormal(aa) && std::isnormal(bb)) {
    return DotProd(Normalize(a), Normalize(b)) > kAgreeingDot;
  }
  return PreciseCosine(a, b) > kAgreeingDot;
}

/// One side of a face, kept at its vertex of the lower index.
struct Side {
  std::uint32_t high;  ///< the other vertex
  std::uint32_t face;
  std::uint8_t lowCorner, highCorner;
};

/// The sides of all faces by their edges: ordered by lower vertex, higher vertex, face. Most
/// vertices have a few sides, so these are counted out to them before they are sorted.
class SortedSides {
 public:
  explicit SortedSides(const Mesh& mesh) : ends_(mesh.verts.size() + 1, 0) {
    // ends_[v + 1] is first how many sides v has, then where the next of them goes.
    ForEachSide(mesh.faces, [&](std::uint32_t low, const Side&) { ++ends_[low + 1]; });
    std::uint32_t total = 0;
    for (std::uint32_t& end : ends_) total += std::exchange(end, total);
    sides_.resize(total);
    ForEachSide(mesh.faces,
                [&](std::uint32_t low, const Side& side) { sides_[ends_[low + 1]++] = side; });
    for (std::size_t v = 0; v + 1 < ends_.size(); ++v) SortByHigh(AtVertex(v));
  }

  /// Calls `visit` with the sides on each edge of at least two.
  void ForEachEdge(const auto& visit) const {
    for (std::size_t v = 0; v + 1 < ends_.size(); ++v) {
      const std::span<const Side> atVertex = AtVertex(v);
      for (auto begin = atVertex.begin(); begin != atVertex.end();) {
        const auto end = std::find_if(begin, atVertex.end(),
                                      [&](const Side& side) { return side.high != begin->high; });
        if (end - begin > 1) visit(std::span<const Side>(begin, end));
        begin = end;
      }
    }
  }

 private:
  std::span<Side> AtVertex(std::size_t v) {
    return std::span(sides_).subspan(ends_[v], ends_[v + 1] - ends_[v]);
  }
  std::span<const Side> AtVertex(std::size_t v) const {
    return std::span(sides_).subspan(ends_[v], ends_[v + 1] - ends_[v]);
  }

  /// Keeps the order of the faces. Mostly there are about three sides.
  static void SortByHigh(std::span<Side> sides) {
    constexpr std::size_t kFew = 16;
    if (sides.size() > kFew) {
      std::ranges::stable_sort(sides, {}, &Side::high);
      return;
    }
    for (std::size_t i = 1; i < sides.size(); ++i) {
      const Side side = sides[i];
      std::size_t place = i;
      for (; place > 0 && sides[place - 1].high > side.high; --place) {
        sides[place] = sides[place - 1];
      }
      sides[place] = side;
    }
  }

  static void ForEachSide(const std::vector<Face>& faces, const auto& visit) {
    for (std::uint32_t f = 0; f < faces.size(); ++f) {
      const std::array<std::uint32_t, 3>& v = faces[f].v;
      for (std::uint8_t corner = 0; corner < 3; ++corner) {
        const std::uint8_t next =
            corner == 2 ? std::uint8_t{0} : static_cast<std::uint8_t>(corner + 1);
        if (v[corner] < v[next]) visit(v[corner], Side{v[next], f, corner, next});
        if (v[corner] > v[next]) visit(v[next], Side{v[corner], f, next, corner});
      }
    }
  }

  std::vector<std::uint32_t> ends_;
  std::vector<Side> sides_;
};

/// Disjoint sets of faces; the representative of a set is its lowest face.
class Surfaces {
 public:
  explicit Surfaces(std::size_t faces) : parent_(faces) {
    std::iota(parent_.begin(), parent_.end(), std::uint32_t{0});
  }

  std::uint32_t Find(std::uint32_t face) {
    while (parent_[face] != face) {
      parent_[face] = parent_[parent_[face]];
      face = parent_[face];
    }
    return face;
  }

  void Join(std::uint32_t a, std::uint32_t b) {
    a = Find(a);
    b = Find(b);
    parent_[std::max(a, b)] = std::min(a, b);
  }

 private:
  std::vector<std::uint32_t> parent_;
};

/// Whether the normals of two faces agree at both ends of their edge.
bool AreSmooth(const Side& a, const Side& b, std::span<const Point3> normals) {
  const auto ofCorner = [&normals](const Side& side, std::size_t corner) -> const Point3& {
    return normals[std::size_t{3} * side.face + corner];
  };
  return Agree(ofCorner(a, a.lowCorner), ofCorner(b, b.lowCorner)) &&
         Agree(ofCorner(a, a.highCorner), ofCorner(b, b.highCorner));
}

/// Joins those of the faces on one edge that are smooth across it. Whether all are.
bool JoinAcrossEdge(std::span<const Side> sides, std::span<const Point3> normals,
                    Surfaces& surfaces) {
  if (sides.size() == 2) {
    const bool isSmooth = AreSmooth(sides[0], sides[1], normals);
    if (isSmooth) surfaces.Join(sides[0].face, sides[1].face);
    return isSmooth;
  }
  std::array<const Side*, kMostWaysAcrossEdge> ways{};
  std::size_t wayCount = 0;
  for (const Side& side : sides) {
    const auto end = ways.begin() + static_cast<std::ptrdiff_t>(wayCount);
    const auto smooth = std::find_if(
        ways.begin(), end, [&](const Side* other) { return AreSmooth(side, *other, normals); });
    if (smooth != end)
      surfaces.Join(side.face, (*smooth)->face);
    else if (wayCount < ways.size())
      ways[wayCount++] = &side;
  }
  return wayCount == 1;
}

/// Whether faces on the edge are one surface, though the normals break there.
bool IsLostCrease(std::span<const Side> sides, std::span<const Point3> normals,
                  Surfaces& surfaces) {
  const Side& first = sides.front();
  return std::ranges::any_of(sides.subspan(1), [&](const Side& side) {
    return !AreSmooth(first, side, normals) &&
           surfaces.Find(first.face) == surfaces.Find(side.face);
  });
}

/// Whether a face with these normals is flat and looks the way that `first` does.
bool IsFlatWith(const Point3& first, std::span<const Point3> normals) {
  return std::ranges::all_of(normals, [&](const Point3& n) { return Agree(first, n); });
}

}  // namespace

SmoothSurfaces FindSmoothSurfaces(const Mesh& mesh, std::span<const Point3> normals) {
  Surfaces surfaces(mesh.faces.size());
  const SortedSides sides(mesh);
  std::vector<std::span<const Side>> broken;
  sides.ForEachEdge([&](std::span<const Side> edge) {
    if (!JoinAcrossEdge(edge, normals, surfaces)) broken.push_back(edge);
  });
  SmoothSurfaces result;
  for (const std::span<const Side> edge : broken) {
    if (IsLostCrease(edge, normals, surfaces)) ++result.lostCreases;
  }
  std::vector<std::uint32_t>& surfaceOf = result.surfaceOf;
  surfaceOf.resize(mesh.faces.size());
  for (std::uint32_t face = 0; face < surfaceOf.size(); ++face)
    surfaceOf[face] = surfaces.Find(face);

  // No grouping can show on a surface that is flat.
  const auto ofFace = [&normals](std::size_t face) { return normals.subspan(3 * face, 3); };
  std::vector<std::uint8_t> isCurved(surfaceOf.size());  // by the surface's representative
  for (std::size_t face = 0; face < surfaceOf.size(); ++face) {
    const std::uint32_t surface = surfaceOf[face];
    if (surface == face || isCurved[surface] != 0) continue;
    const Point3& first = ofFace(surface)[0];
    isCurved[surface] =
        !IsFlatWith(first, ofFace(face)) || !IsFlatWith(first, ofFace(surface)) ? 1 : 0;
  }
  for (std::uint32_t& surface : surfaceOf) {
    if (isCurved[surface] == 0) surface = kFlatFace;
  }
  return result;
}

std::size_t RebuildSmoothing(Mesh& mesh, std::span<const Point3> normals) {
  const SmoothSurfaces surfaces = FindSmoothSurfaces(mesh, normals);
  AssignSmoothingBits(mesh, surfaces.surfaceOf);
  return surfaces.lostCreases;
}

}  // namespace mapexport
