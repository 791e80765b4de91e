#include "exporter/geometry/SmoothedNormals.h"

#include <algorithm>
#include <bit>

namespace mapexport {
namespace {

/// Whether corner `k` names a vertex that an earlier corner of the face does not name.
bool IsFirstUse(const GroupFace& face, std::size_t k) {
  return k == 0 || (face.v[k] != face.v[0] && (k == 1 || face.v[k] != face.v[1]));
}

/// `value` when it counts, else -0, which leaves every sum unchanged. Without a branch, because its
/// outcome can't be predicted.
float OrNothing(float value, bool counts) {
  constexpr std::uint32_t kMinusZero = 0x8000'0000;
  return std::bit_cast<float>(counts ? std::bit_cast<std::uint32_t>(value) : kMinusZero);
}

}  // namespace

SmoothedNormals::SmoothedNormals(std::span<const GroupFace> faces, std::uint32_t firstVertex,
                                 std::size_t vertexCount)
    : faces_(faces), firstVertex_(firstVertex) {
  if (std::ranges::all_of(faces, [](const GroupFace& face) { return face.smoothing == 0; })) {
    return;
  }
  facings_.reserve(faces.size());
  starts_.assign(vertexCount + 2, 0);
  // Counts, then sums, then fills: after the last step starts_[v] is where the faces of v begin.
  for (const GroupFace& face : faces) {
    facings_.push_back({face.normal, face.smoothing});
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
  return {OfCorner(f, face.v[0] - firstVertex_), OfCorner(f, face.v[1] - firstVertex_),
          OfCorner(f, face.v[2] - firstVertex_)};
}

Point3 SmoothedNormals::OfCorner(std::size_t f, std::uint32_t v) const {
  const std::uint32_t smoothing = facings_[f].smoothing;
  Point3 sum = facings_[f].normal;
  for (std::uint32_t i = starts_[v]; i < starts_[v + 1]; ++i) {
    const Facing& other = facings_[users_[i]];
    const bool counts = users_[i] != f && (other.smoothing & smoothing) != 0;
    sum = sum + Point3{OrNothing(other.normal.x, counts), OrNothing(other.normal.y, counts),
                       OrNothing(other.normal.z, counts)};
  }
  return Normalize(sum);
}

}  // namespace mapexport
