// Morphed and skinned vertices of glTF meshes.
#include "importer/gltf/GltfDeform.h"

#include <algorithm>
#include <cstddef>

namespace mapexport {
namespace {

using Rows = std::array<std::array<double, 4>, 3>;

Point3 Rounded(double x, double y, double z) {
  return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

/// `p` with `w` for its fourth coordinate.
Point3 Transformed(const Rows& m, const Point3& p, double w) {
  const std::array<double, 4> v{static_cast<double>(p.x), static_cast<double>(p.y),
                                static_cast<double>(p.z), w};
  const auto row = [&](std::size_t r) {
    return m[r][0] * v[0] + m[r][1] * v[1] + m[r][2] * v[2] + m[r][3] * v[3];
  };
  return Rounded(row(0), row(1), row(2));
}

/// What turns normals as the upper left part of `m` turns planes, but for their length.
Rows NormalMatrix(const Rows& m) {
  Rows cofactors{};
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      const std::size_t r1 = (r + 1) % 3, r2 = (r + 2) % 3;
      const std::size_t c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      cofactors[r][c] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    }
  }
  return cofactors;
}

/// The weighted sum of the matrices of a vertex's joints; false when nothing has a weight.
bool Blend(const GltfInfluences& influences, std::size_t vertex,
           std::span<const AffineMatrix> matrices, Rows& blend) {
  blend = {};
  double sum = 0;
  for (std::size_t set = 0; set < influences.joints.size(); ++set) {
    for (std::size_t k = 0; k < 4; ++k) {
      const auto weight = static_cast<double>((*influences.weights[set])[vertex][k]);
      if (weight == 0) continue;
      sum += weight;
      const Rows& joint = matrices[(*influences.joints[set])[vertex][k]].rows;
      for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 4; ++c) blend[r][c] += weight * joint[r][c];
      }
    }
  }
  // The sum is 1 but for rounding, which must not move the vertex.
  if (!(sum > 0)) return false;
  for (std::array<double, 4>& row : blend) {
    for (double& number : row) number /= sum;
  }
  return true;
}

}  // namespace

void AddMorph(std::vector<Point3>& points, std::span<const Point3> displacements, float weight) {
  const std::size_t count = std::min(points.size(), displacements.size());
  for (std::size_t i = 0; i < count; ++i) points[i] = points[i] + displacements[i] * weight;
}

void SkinVertices(const GltfInfluences& influences, std::span<const AffineMatrix> matrices,
                  std::vector<Point3>& positions, std::vector<Point3>& normals) {
  Rows blend;
  for (std::size_t v = 0; v < positions.size(); ++v) {
    if (!Blend(influences, v, matrices, blend)) continue;
    positions[v] = Transformed(blend, positions[v], 1);
    if (v < normals.size()) normals[v] = Transformed(NormalMatrix(blend), normals[v], 0);
  }
}

}  // namespace mapexport
