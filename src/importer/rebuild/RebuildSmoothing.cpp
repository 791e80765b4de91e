// Smoothing groups that give back the look of stored normals.
#include "importer/rebuild/RebuildSmoothing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>

#include "importer/rebuild/SmoothingBits.h"

namespace mapexport {
namespace {

constexpr float kAgreeingDot = 0.9998f;
/// Faces on one edge are compared with this many different ones before them; bounds the work on an
/// edge that thousands of faces share.
constexpr std::size_t kMostWaysAcrossEdge = 16;

bool Agree(const Point3& a, const Point3& b) {
  return DotProd(a, b) > kAgreeingDot;  // false for NaN and null vectors
}

/// One side of a face, named from its vertex of the lower index to the other.
struct Side {
  std::uint64_t edge;
  std::uint32_t face;
  std::uint8_t lowCorner, highCorner;
};

std::vector<Side> SortedSides(const std::vector<Face>& faces) {
  std::vector<Side> sides;
  sides.reserve(3 * faces.size());
  for (std::size_t f = 0; f < faces.size(); ++f) {
    for (std::uint8_t corner = 0; corner < 3; ++corner) {
      std::uint8_t low = corner;
      std::uint8_t high = corner == 2 ? std::uint8_t{0} : static_cast<std::uint8_t>(corner + 1);
      const std::array<std::uint32_t, 3>& v = faces[f].v;
      if (v[low] == v[high]) continue;
      if (v[low] > v[high]) std::swap(low, high);
      sides.push_back(
          {(std::uint64_t{v[low]} << 32) | v[high], static_cast<std::uint32_t>(f), low, high});
    }
  }
  std::ranges::sort(sides, [](const Side& a, const Side& b) {
    return a.edge != b.edge ? a.edge < b.edge : a.face < b.face;
  });
  return sides;
}

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

/// Joins those of the faces on one edge that are smooth across it.
void JoinAcrossEdge(std::span<const Side> sides, const std::vector<CornerNormals>& normals,
                    Surfaces& surfaces) {
  std::array<const Side*, kMostWaysAcrossEdge> ways{};
  std::size_t wayCount = 0;
  for (const Side& side : sides) {
    const CornerNormals& mine = normals[side.face];
    const auto end = ways.begin() + static_cast<std::ptrdiff_t>(wayCount);
    const auto smooth = std::find_if(ways.begin(), end, [&](const Side* other) {
      const CornerNormals& theirs = normals[other->face];
      return Agree(mine[side.lowCorner], theirs[other->lowCorner]) &&
             Agree(mine[side.highCorner], theirs[other->highCorner]);
    });
    if (smooth != end)
      surfaces.Join(side.face, (*smooth)->face);
    else if (wayCount < ways.size())
      ways[wayCount++] = &side;
  }
}

/// Calls `visit` with the sides on each edge.
void ForEachEdge(const std::vector<Side>& sides, const auto& visit) {
  for (auto begin = sides.begin(); begin != sides.end();) {
    const auto end = std::find_if(begin, sides.end(),
                                  [&](const Side& side) { return side.edge != begin->edge; });
    visit(std::span<const Side>(begin, end));
    begin = end;
  }
}

/// Whether faces on the edge are one surface, though the normals break there.
bool IsLostCrease(std::span<const Side> sides, const std::vector<CornerNormals>& normals,
                  Surfaces& surfaces) {
  const Side& first = sides.front();
  const CornerNormals& mine = normals[first.face];
  return std::ranges::any_of(sides.subspan(1), [&](const Side& side) {
    const CornerNormals& theirs = normals[side.face];
    const bool isSmooth = Agree(mine[first.lowCorner], theirs[side.lowCorner]) &&
                          Agree(mine[first.highCorner], theirs[side.highCorner]);
    return !isSmooth && surfaces.Find(first.face) == surfaces.Find(side.face);
  });
}

/// Whether a face with these normals is flat and looks the way that `first` does.
bool IsFlatWith(const Point3& first, const CornerNormals& normals) {
  return std::ranges::all_of(normals, [&](const Point3& n) { return Agree(first, n); });
}

}  // namespace

SmoothSurfaces FindSmoothSurfaces(const Mesh& mesh, const std::vector<CornerNormals>& normals) {
  std::vector<CornerNormals> unit = normals;
  for (CornerNormals& corners : unit) {
    for (Point3& normal : corners) normal = Normalize(normal);
  }
  Surfaces surfaces(mesh.faces.size());
  const std::vector<Side> sides = SortedSides(mesh.faces);
  ForEachEdge(sides, [&](std::span<const Side> edge) { JoinAcrossEdge(edge, unit, surfaces); });
  SmoothSurfaces result;
  ForEachEdge(sides, [&](std::span<const Side> edge) {
    if (IsLostCrease(edge, unit, surfaces)) ++result.lostCreases;
  });
  std::vector<std::uint32_t>& surfaceOf = result.surfaceOf;
  surfaceOf.resize(mesh.faces.size());
  for (std::uint32_t face = 0; face < surfaceOf.size(); ++face)
    surfaceOf[face] = surfaces.Find(face);

  // No grouping can show on a surface that is flat.
  std::vector<bool> isCurved(surfaceOf.size());  // by the surface's representative
  for (std::size_t face = 0; face < surfaceOf.size(); ++face) {
    const std::uint32_t surface = surfaceOf[face];
    if (surface == face || isCurved[surface]) continue;
    isCurved[surface] =
        !IsFlatWith(unit[surface][0], unit[face]) || !IsFlatWith(unit[surface][0], unit[surface]);
  }
  for (std::uint32_t& surface : surfaceOf) {
    if (!isCurved[surface]) surface = kFlatFace;
  }
  return result;
}

std::size_t RebuildSmoothing(Mesh& mesh, const std::vector<CornerNormals>& normals) {
  const SmoothSurfaces surfaces = FindSmoothSurfaces(mesh, normals);
  AssignSmoothingBits(mesh, surfaces.surfaceOf);
  return surfaces.lostCreases;
}

}  // namespace mapexport
