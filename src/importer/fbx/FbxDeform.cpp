// Shape keys and bones of an FBX file.
#include "importer/fbx/FbxDeform.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <assimp/scene.h>

#include "importer/fbx/FbxModels.h"
#include "importer/fbx/FoldHelperNodes.h"
#include "importer/rebuild/AffineMatrix.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/rebuild/PointTable.h"

namespace mapexport {
namespace {

/// Empty when the matrix is nearly flat.
std::optional<AffineMatrix> InverseOf(const AffineMatrix& matrix) {
  const auto& m = matrix.rows;
  AffineMatrix inverse;
  double determinant = 0;
  double size = 1;
  for (std::size_t r = 0; r < 3; ++r) {
    const std::size_t r1 = (r + 1) % 3, r2 = (r + 2) % 3;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::size_t c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      inverse.rows[c][r] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    }
    size *= std::hypot(m[r][0], m[r][1], m[r][2]);
  }
  for (std::size_t k = 0; k < 3; ++k) determinant += m[0][k] * inverse.rows[k][0];
  constexpr double kFlat = 1e-9;
  if (!(std::abs(determinant) > kFlat * size)) return std::nullopt;
  for (std::array<double, 4>& row : inverse.rows) {
    for (std::size_t c = 0; c < 3; ++c) row[c] /= determinant;
    row[3] = -(row[0] * m[0][3] + row[1] * m[1][3] + row[2] * m[2][3]);
  }
  return inverse;
}

Point3 MovedBy(const AffineMatrix& matrix, const Point3& p) {
  const auto along = [&](std::size_t r) {
    const auto& row = matrix.rows[r];
    return static_cast<float>(row[0] * static_cast<double>(p.x) +
                              row[1] * static_cast<double>(p.y) +
                              row[2] * static_cast<double>(p.z) + row[3]);
  };
  return {along(0), along(1), along(2)};
}

/// Adds `weight` times `added`.
void AddWeighted(AffineMatrix& sum, const AffineMatrix& added, double weight) {
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 4; ++c) sum.rows[r][c] += weight * added.rows[r][c];
  }
}

/// What is added up for a vertex.
struct WeightedSum {
  AffineMatrix sum{.rows = {}};
  double weight = 0;
};

/// The longest way between points of the same index, and the largest number of the first ones.
struct Distance {
  float way = 0;
  float size = 0;
};

Distance Between(std::span<const Point3> from, std::span<const Point3> to) {
  Distance distance;
  for (std::size_t i = 0; i < from.size(); ++i) {
    distance.way = std::max(distance.way, Length(to[i] - from[i]));
    distance.size = std::max(distance.size, Length(from[i]));
  }
  return distance;
}

/// Corners that had one place and one normal have one normal again.
std::vector<Point3> NormalsOfMoved(const aiMesh& mesh, std::span<const Point3> before,
                                   std::span<const Point3> after, std::span<const Point3> normals) {
  PointTable places;
  PointTable directions;
  std::vector<std::uint64_t> keys(before.size());
  for (std::size_t i = 0; i < keys.size(); ++i)
    keys[i] = std::uint64_t{places.Add(before[i])} << 32 | directions.Add(normals[i]);
  std::unordered_map<std::uint64_t, Point3> sums;
  const unsigned faceCount = mesh.mFaces == nullptr ? 0 : mesh.mNumFaces;
  for (const aiFace& face : std::span(mesh.mFaces, faceCount)) {
    if (face.mIndices == nullptr || face.mNumIndices != 3) continue;
    const auto corners = std::span(face.mIndices, 3);
    if (std::ranges::any_of(corners, [&](unsigned v) { return v >= after.size(); })) continue;
    const Point3 normal =
        CrossProd(after[corners[1]] - after[corners[0]], after[corners[2]] - after[corners[0]]);
    for (const unsigned v : corners) {
      Point3& sum = sums[keys[v]];
      sum = sum + normal;
    }
  }
  std::vector<Point3> moved(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) moved[i] = sums[keys[i]];
  return moved;
}

}  // namespace

FbxDeform::FbxDeform(const FbxModels& models, const std::vector<FoldedNode>& nodes)
    : models_(models), nodes_(nodes) {
  for (std::size_t i = 0; i < nodes.size(); ++i) nodeOf_.emplace(BytesOf(nodes[i].node->mName), i);
}

void FbxDeform::Apply(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions,
                      std::vector<Point3>& normals) const {
  const std::vector<Point3> before = positions;
  Morph(mesh, node, positions);
  Pose(mesh, node, positions);
  if (positions != before && normals.size() == positions.size())
    normals = NormalsOfMoved(mesh, before, positions, normals);
}

void FbxDeform::Morph(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions) const {
  const FbxObject* model = models_.ModelOf(node);
  if (mesh.mNumAnimMeshes == 0 || mesh.mAnimMeshes == nullptr || model == nullptr) return;
  // The library's own weights are 1 for most shapes.
  const std::unordered_map<std::string_view, double> weights = models_.ShapeWeightsOf(*model);
  const std::vector<Point3> basis = positions;
  for (const aiAnimMesh* shape : std::span(mesh.mAnimMeshes, mesh.mNumAnimMeshes)) {
    if (shape == nullptr || shape->mVertices == nullptr) continue;
    const auto weight = weights.find(BytesOf(shape->mName));
    if (weight == weights.end() || weight->second == 0) continue;
    const std::size_t count = std::min<std::size_t>(positions.size(), shape->mNumVertices);
    for (std::size_t i = 0; i < count; ++i) {
      const aiVector3D& moved = shape->mVertices[i];
      positions[i] = positions[i] + (Point3{moved.x, moved.y, moved.z} - basis[i]) *
                                        static_cast<float>(weight->second);
    }
  }
}

void FbxDeform::Pose(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions) const {
  if (mesh.mNumBones == 0 || mesh.mBones == nullptr) return;
  const std::optional<AffineMatrix> intoNode = InverseOf(nodes_[node].world);
  if (!intoNode) return;
  std::vector<WeightedSum> blends(positions.size());
  for (const aiBone* bone : std::span(mesh.mBones, mesh.mNumBones)) {
    if (bone == nullptr || bone->mWeights == nullptr) continue;
    const auto found = nodeOf_.find(BytesOf(bone->mName));
    if (found == nodeOf_.end()) return;
    const AffineMatrix place =
        *intoNode * nodes_[found->second].world * AffineFrom(bone->mOffsetMatrix);
    if (!IsUsable(place)) return;
    for (const aiVertexWeight& influence : std::span(bone->mWeights, bone->mNumWeights)) {
      const auto weight = static_cast<double>(influence.mWeight);
      if (influence.mVertexId >= blends.size() || !(weight > 0)) continue;
      AddWeighted(blends[influence.mVertexId].sum, place, weight);
      blends[influence.mVertexId].weight += weight;
    }
  }
  std::vector<Point3> posed = positions;
  for (std::size_t i = 0; i < posed.size(); ++i) {
    if (blends[i].weight == 0) continue;
    AffineMatrix blend{.rows = {}};
    AddWeighted(blend, blends[i].sum, 1 / blends[i].weight);
    posed[i] = MovedBy(blend, posed[i]);
  }
  // Bones that are where the mesh was bound leave the rounding of their matrices behind.
  constexpr float kRounding = 1e-4f;
  const Distance distance = Between(positions, posed);
  if (distance.way > kRounding * distance.size) positions = std::move(posed);
}

}  // namespace mapexport
