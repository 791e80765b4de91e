// Smoothing groups that give back the look of stored normals.
#include "importer/RebuildSmoothing.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>

namespace mapexport {
namespace {

constexpr float kAgreeingDot = 0.9998f;
constexpr unsigned kFirstBit = 1;
constexpr unsigned kLastBit = 31;
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

Surfaces FindSurfaces(const std::vector<Face>& faces, const std::vector<CornerNormals>& normals) {
  Surfaces surfaces(faces.size());
  const std::vector<Side> sides = SortedSides(faces);
  for (auto begin = sides.begin(); begin != sides.end();) {
    const auto end = std::find_if(begin, sides.end(),
                                  [&](const Side& side) { return side.edge != begin->edge; });
    JoinAcrossEdge({begin, end}, normals, surfaces);
    begin = end;
  }
  return surfaces;
}

/// Whether no grouping can show on these faces: all of their normals agree, or there is but one
/// face.
bool IsFlat(std::span<const std::uint32_t> faces, const std::vector<CornerNormals>& normals) {
  if (faces.size() == 1) return true;
  const Point3& first = normals[faces.front()][0];
  return std::ranges::all_of(faces, [&](std::uint32_t face) {
    return std::ranges::all_of(normals[face], [&](const Point3& n) { return Agree(first, n); });
  });
}

/// The lowest bit that no surface in `taken` has; when all are taken, one that differs from surface
/// to surface.
unsigned ChooseBit(std::uint32_t taken, std::size_t surface) {
  constexpr std::uint32_t kNeverUsed = (1u << kFirstBit) - 1;
  const auto bit = static_cast<unsigned>(std::countr_one(taken | kNeverUsed));
  if (bit <= kLastBit) return bit;
  return kFirstBit + static_cast<unsigned>(surface % (kLastBit - kFirstBit + 1));
}

}  // namespace

void RebuildSmoothing(Mesh& mesh, const std::vector<CornerNormals>& normals) {
  for (Face& face : mesh.faces) face.smGroup = 0;
  std::vector<CornerNormals> unit = normals;
  for (CornerNormals& corners : unit) {
    for (Point3& normal : corners) normal = Normalize(normal);
  }
  Surfaces surfaces = FindSurfaces(mesh.faces, unit);

  // The faces, surface by surface, in the order of the surfaces' first faces.
  std::vector<std::uint32_t> order(mesh.faces.size());
  std::iota(order.begin(), order.end(), std::uint32_t{0});
  std::vector<std::uint32_t> surfaceOf(order.size());
  for (const std::uint32_t face : order) surfaceOf[face] = surfaces.Find(face);
  std::ranges::stable_sort(order, {}, [&](std::uint32_t face) { return surfaceOf[face]; });

  std::vector<std::uint32_t> bitsAtVertex(mesh.verts.size(), 0);
  std::size_t surfaceCount = 0;
  for (auto begin = order.begin(); begin != order.end();) {
    const auto end = std::find_if(begin, order.end(), [&](std::uint32_t face) {
      return surfaceOf[face] != surfaceOf[*begin];
    });
    const std::span<const std::uint32_t> faces(begin, end);
    begin = end;
    if (IsFlat(faces, unit)) continue;

    std::uint32_t taken = 0;
    for (const std::uint32_t face : faces) {
      for (const std::uint32_t vertex : mesh.faces[face].v) taken |= bitsAtVertex[vertex];
    }
    const std::uint32_t group = 1u << ChooseBit(taken, surfaceCount++);
    for (const std::uint32_t face : faces) {
      mesh.faces[face].smGroup = group;
      for (const std::uint32_t vertex : mesh.faces[face].v) bitsAtVertex[vertex] |= group;
    }
  }
}

}  // namespace mapexport
