// Shape keys and bones of an FBX file.
#include "importer/fbx/FbxDeform.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include <assimp/scene.h>

#include "importer/fbx/FbxModels.h"
#include "importer/fbx/FoldHelperNodes.h"
#include "importer/rebuild/AffineMatrix.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/rebuild/PointTable.h"
#include "importer/rebuild/RebuildMesh.h"
#include "system/IsFinite.h"

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

/// What holds all finite points of a mesh.
struct Box {
  Point3 low{kInfinity, kInfinity, kInfinity};
  Point3 high{-kInfinity, -kInfinity, -kInfinity};
  static constexpr float kInfinity = std::numeric_limits<float>::infinity();

  void Add(const Point3& p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  Point3 Corner(unsigned i) const {
    return {(i & 1U) == 0 ? low.x : high.x, (i & 2U) == 0 ? low.y : high.y,
            (i & 4U) == 0 ? low.z : high.z};
  }
};

/// The length of the translation, and of the rows without it, all three as one.
double TranslationSize(const AffineMatrix& m) {
  return std::hypot(m.rows[0][3], m.rows[1][3], m.rows[2][3]);
}
double LinearSize(const AffineMatrix& m) {
  double squares = 0;
  for (const std::array<double, 4>& row : m.rows)
    squares += row[0] * row[0] + row[1] * row[1] + row[2] * row[2];
  return std::sqrt(squares);
}

/// Whether a point of `box` moves by more than the rounding of the library's floats: those of a
/// chain of nodes whose translations are `offset` long in all, and of the box.
bool Moves(const AffineMatrix& place, const Box& box, double offset) {
  constexpr double kRounding = 32 * std::numeric_limits<float>::epsilon();
  for (unsigned i = 0; i < 8; ++i) {
    const Point3 corner = box.Corner(i);
    const auto way = static_cast<double>(Length(MovedBy(place, corner) - corner));
    if (way > kRounding * (static_cast<double>(Length(corner)) + offset)) return true;
  }
  return false;
}

/// What takes the geometry into a bone. The library's matrix is the file's in some versions and
/// leaves the mesh's place out in later ones, so it is the file's, if that can be told. The file's
/// is for the node, to which `geometric` takes the geometry.
AffineMatrix BindOf(const aiBone& bone, const std::optional<AffineMatrix>& ofNode,
                    const AffineMatrix& geometric) {
  const AffineMatrix library = AffineFrom(bone.mOffsetMatrix);
  if (!ofNode) return library;
  const AffineMatrix file = *ofNode * geometric;
  constexpr double kRounding = 1e-5;
  double largest = 0, difference = 0;
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      largest = std::max(largest, std::abs(file.rows[r][c]));
      difference = std::max(difference, std::abs(file.rows[r][c] - library.rows[r][c]));
    }
  }
  return difference <= kRounding * largest ? library : file;
}

bool HasWeight(const aiBone* bone) {
  return bone != nullptr && bone->mWeights != nullptr &&
         std::ranges::any_of(std::span(bone->mWeights, bone->mNumWeights),
                             [](const aiVertexWeight& influence) { return influence.mWeight > 0; });
}

struct PlacedBone {
  const aiBone* bone = nullptr;
  AffineMatrix place;
};

void Blend(std::span<const PlacedBone> bones, std::vector<Point3>& positions) {
  std::vector<WeightedSum> blends(positions.size());
  for (const auto& [bone, place] : bones) {
    for (const aiVertexWeight& influence : std::span(bone->mWeights, bone->mNumWeights)) {
      const auto weight = static_cast<double>(influence.mWeight);
      if (influence.mVertexId >= blends.size() || !(weight > 0)) continue;
      AddWeighted(blends[influence.mVertexId].sum, place, weight);
      blends[influence.mVertexId].weight += weight;
    }
  }
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (blends[i].weight == 0) continue;
    AffineMatrix blend{.rows = {}};
    AddWeighted(blend, blends[i].sum, 1 / blends[i].weight);
    positions[i] = MovedBy(blend, positions[i]);
  }
}

/// Corners of all parts that had one place and one normal have one normal again.
void RenewNormals(std::span<LibraryPart> parts, std::span<const std::vector<Point3>> before) {
  PointTable places;
  PointTable directions;
  std::unordered_map<std::uint64_t, Point3> sums;
  std::vector<std::vector<std::uint64_t>> keys(parts.size());  // by part and vertex
  for (std::size_t p = 0; p < parts.size(); ++p) {
    const auto& [mesh, index, after, normals] = parts[p];
    if (normals.size() != after.size()) continue;
    for (std::size_t i = 0; i < after.size(); ++i)
      keys[p].push_back(std::uint64_t{places.Add(before[p][i])} << 32 | directions.Add(normals[i]));
    const unsigned faceCount = mesh->mFaces == nullptr ? 0 : mesh->mNumFaces;
    for (const aiFace& face : std::span(mesh->mFaces, faceCount)) {
      if (face.mIndices == nullptr || face.mNumIndices != 3) continue;
      const auto corners = std::span(face.mIndices, 3);
      if (std::ranges::any_of(corners, [&](unsigned v) { return v >= keys[p].size(); })) continue;
      const Point3 normal =
          CrossProd(after[corners[1]] - after[corners[0]], after[corners[2]] - after[corners[0]]);
      for (const unsigned v : corners) {
        Point3& sum = sums[keys[p][v]];
        sum = sum + normal;
      }
    }
  }
  for (std::size_t p = 0; p < parts.size(); ++p) {
    for (std::size_t i = 0; i < keys[p].size(); ++i) parts[p].normals[i] = sums[keys[p][i]];
  }
}

}  // namespace

bool FbxDeform::Apply(std::span<LibraryPart> parts, std::size_t node) const {
  if (std::ranges::all_of(parts, [](const LibraryPart& part) {
        return part.mesh->mNumBones == 0 && part.mesh->mNumAnimMeshes == 0;
      }))
    return true;
  std::vector<std::vector<Point3>> before;
  for (const LibraryPart& part : parts) before.push_back(part.positions);
  Morph(parts, node);
  const bool isPosed = Pose(parts, node);
  if (!std::ranges::equal(parts, before, {}, &LibraryPart::positions)) RenewNormals(parts, before);
  return isPosed;
}

void FbxDeform::Morph(std::span<LibraryPart> parts, std::size_t node) const {
  const FbxObject* model = models_.ModelOf(node);
  if (model == nullptr) return;
  // The library's own weights are 1 for most shapes.
  const std::unordered_map<std::string, double> weights = models_.ShapeWeightsOf(*model);
  for (auto& [mesh, index, positions, normals] : parts) {
    if (mesh->mAnimMeshes == nullptr) continue;
    const std::vector<Point3> basis = positions;
    for (const aiAnimMesh* shape : std::span(mesh->mAnimMeshes, mesh->mNumAnimMeshes)) {
      if (shape == nullptr || shape->mVertices == nullptr) continue;
      const auto weight = weights.find(std::string(BytesOf(shape->mName)));
      if (weight == weights.end() || weight->second == 0) continue;
      const std::size_t count = std::min<std::size_t>(positions.size(), shape->mNumVertices);
      for (std::size_t i = 0; i < count; ++i) {
        const aiVector3D& moved = shape->mVertices[i];
        positions[i] = positions[i] + (Point3{moved.x, moved.y, moved.z} - basis[i]) *
                                          static_cast<float>(weight->second);
      }
    }
  }
}

bool FbxDeform::Pose(std::span<LibraryPart> parts, std::size_t node) const {
  Box box;
  for (const LibraryPart& part : parts) {
    for (const Point3& position : part.positions) {
      if (IsFinite(position)) box.Add(position);
    }
  }
  const FbxObject* model = models_.ModelOf(node);
  std::unordered_map<std::string_view, FbxModels::Bone> boneOf;
  if (model != nullptr) boneOf = models_.BonesOf(*model);
  const AffineMatrix& world = nodes_[node].world;
  const std::optional<AffineMatrix> intoNode = InverseOf(world);
  bool isMoved = false;
  std::vector<std::vector<PlacedBone>> bones(parts.size());
  for (std::size_t p = 0; p < parts.size(); ++p) {
    const aiMesh& mesh = *parts[p].mesh;
    for (const aiBone* bone : std::span(mesh.mBones, mesh.mBones == nullptr ? 0 : mesh.mNumBones)) {
      if (!HasWeight(bone)) continue;
      const auto found = boneOf.find(BytesOf(bone->mName));
      if (!intoNode || found == boneOf.end() || !found->second.node) return false;
      const AffineMatrix& boneWorld = nodes_[*found->second.node].world;
      const AffineMatrix place =
          *intoNode * boneWorld * BindOf(*bone, found->second.bind, nodes_[node].geometric);
      if (!IsUsable(place)) return false;
      const double offset =
          LinearSize(*intoNode) * (TranslationSize(world) + TranslationSize(boneWorld));
      isMoved = isMoved || Moves(place, box, offset);
      bones[p].push_back({bone, place});
    }
  }
  for (std::size_t p = 0; isMoved && p < parts.size(); ++p) Blend(bones[p], parts[p].positions);
  return true;
}

}  // namespace mapexport
