#include "geometry/SmoothedNormals.h"

#include <algorithm>

namespace mapexport {
namespace {

/// Whether corner `k` names a vertex that an earlier corner of the face does not name.
bool IsFirstUse(const GroupFace& face, std::size_t k) {
  return std::find(face.v.begin(), face.v.begin() + static_cast<std::ptrdiff_t>(k), face.v[k]) ==
         face.v.begin() + static_cast<std::ptrdiff_t>(k);
}

}  // namespace

SmoothedNormals::SmoothedNormals(std::span<const GroupFace> faces, std::uint32_t firstVertex,
                                 std::size_t vertexCount)
    : faces_(faces), firstVertex_(firstVertex) {
  if (std::ranges::all_of(faces, [](const GroupFace& face) { return face.smoothing == 0; })) {
    return;
  }
  starts_.assign(vertexCount + 2, 0);
  // Counts, then sums, then fills: after the last step starts_[v] is where the faces of v begin.
  for (const GroupFace& face : faces) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (IsFirstUse(face, k)) ++starts_[face.v[k] - firstVertex + 2];
    }
  }
  for (std::size_t v = 2; v < starts_.size(); ++v) starts_[v] += starts_[v - 1];
  users_.resize(starts_.back());
  for (std::size_t f = 0; f < faces.size(); ++f) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (!IsFirstUse(faces[f], k)) continue;
      users_[starts_[faces[f].v[k] - firstVertex + 1]++] = static_cast<std::uint32_t>(f);
    }
  }
}

std::array<Point3, 3> SmoothedNormals::OfFace(std::size_t f) const {
  const GroupFace& face = faces_[f];
  if (face.smoothing == 0) return {face.normal, face.normal, face.normal};
  std::array<Point3, 3> normals;
  for (std::size_t k = 0; k < 3; ++k) {
    const std::uint32_t v = face.v[k] - firstVertex_;
    Point3 sum = face.normal;
    for (std::uint32_t i = starts_[v]; i < starts_[v + 1]; ++i) {
      const GroupFace& other = faces_[users_[i]];
      if (users_[i] != f && (other.smoothing & face.smoothing) != 0) sum = sum + other.normal;
    }
    normals[k] = Normalize(sum);
  }
  return normals;
}

}  // namespace mapexport
