// A host mesh from the library's meshes of one node.
#include "importer/rebuild/RebuildMesh.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>

#include <assimp/scene.h>

#include "importer/LeftOut.h"
#include "importer/rebuild/MaterialParts.h"
#include "importer/rebuild/PointTable.h"
#include "importer/rebuild/RebuildSmoothing.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();

Point3 PointOf(const aiVector3D& v) {
  return {v.x, v.y, v.z};
}

struct Triangle {
  std::array<unsigned, 3> corners;
  unsigned face;  ///< index in the library's mesh
};

/// The triangles of `mesh` whose corners exist and are finite. Counts everything else.
std::vector<Triangle> SoundTriangles(const aiMesh& mesh, LeftOut& leftOut) {
  std::vector<bool> isSound(mesh.mVertices == nullptr ? 0 : mesh.mNumVertices);
  for (std::size_t v = 0; v < isSound.size(); ++v) {
    isSound[v] = IsFinite(PointOf(mesh.mVertices[v]));
    if (!isSound[v]) ++leftOut.vertices;
  }
  std::vector<Triangle> triangles;
  const unsigned faceCount = mesh.mFaces == nullptr ? 0 : mesh.mNumFaces;
  triangles.reserve(faceCount);
  for (unsigned f = 0; f < faceCount; ++f) {
    const aiFace& face = mesh.mFaces[f];
    const unsigned corners = face.mIndices == nullptr ? 0 : face.mNumIndices;
    if (corners == 3) {
      const Triangle triangle{{face.mIndices[0], face.mIndices[1], face.mIndices[2]}, f};
      const bool sound = std::ranges::all_of(
          triangle.corners, [&](unsigned v) { return v < isSound.size() && isSound[v]; });
      if (sound)
        triangles.push_back(triangle);
      else
        ++leftOut.faces;
    } else if (corners == 1) {
      ++leftOut.points;
    } else if (corners == 2) {
      ++leftOut.lines;
    } else {
      ++leftOut.polygons;
    }
  }
  return triangles;
}

class MeshBuilder {
 public:
  explicit MeshBuilder(LeftOut& leftOut) : leftOut_(leftOut) {}

  /// `isFlat` by the mesh's face, or empty.
  void Add(const aiMesh& source, int material, const std::vector<bool>& isFlat) {
    const std::vector<Triangle> triangles = SoundTriangles(source, leftOut_);
    leftOut_.bones += source.mNumBones;
    if (source.mColors[0] != nullptr) leftOut_.colours += source.mNumVertices;
    if (source.mTextureCoords[1] != nullptr) ++leftOut_.channels;
    if (triangles.empty()) return;
    const std::uint16_t materialId = materials_.IdOf(material);
    const std::vector<std::uint32_t> vertexOf = AddVertices(source, triangles);
    AddTextureFaces(source, triangles);
    for (const Triangle& triangle : triangles) {
      Face face;
      CornerNormals corners{};
      // Without normals a face is smooth with no other.
      const bool hasNormals =
          source.mNormals != nullptr && (triangle.face >= isFlat.size() || !isFlat[triangle.face]);
      for (std::size_t k = 0; k < 3; ++k) {
        const unsigned corner = triangle.corners[k];
        face.v[k] = vertexOf[corner];
        if (hasNormals) corners[k] = PointOf(source.mNormals[corner]);
      }
      face.SetMatID(materialId);
      mesh_.faces.push_back(face);
      normals_.push_back(corners);
    }
    hasNormals_ = hasNormals_ || source.mNormals != nullptr;
  }

  RebuiltMesh Finish() {
    if (mesh_.faces.empty()) return {};
    mesh_.verts = positions_.TakePoints();
    if (hasTexture_)
      mesh_.tVerts = textureVertices_.TakePoints();
    else
      mesh_.tvFace.clear();
    if (hasNormals_) leftOut_.creases += RebuildSmoothing(mesh_, normals_);
    return {std::make_shared<const Mesh>(std::move(mesh_)), materials_.Take()};
  }

 private:
  /// The new index of each vertex that the triangles use, in the order of the vertices.
  std::vector<std::uint32_t> AddVertices(const aiMesh& source,
                                         const std::vector<Triangle>& triangles) {
    std::vector<std::uint32_t> vertexOf(source.mNumVertices, kUnused);
    for (const Triangle& triangle : triangles) {
      for (const unsigned v : triangle.corners) vertexOf[v] = 0;
    }
    for (std::size_t v = 0; v < vertexOf.size(); ++v) {
      if (vertexOf[v] != kUnused) vertexOf[v] = positions_.Add(PointOf(source.mVertices[v]));
    }
    return vertexOf;
  }

  /// Meshes without texture coordinates get (0, 0, 0), for others of the node may have some.
  void AddTextureFaces(const aiMesh& source, const std::vector<Triangle>& triangles) {
    const aiVector3D* const coordinates = source.mTextureCoords[0];
    hasTexture_ = hasTexture_ || coordinates != nullptr;
    const bool hasDepth = source.mNumUVComponents[0] == 3;
    for (const Triangle& triangle : triangles) {
      TVFace face;
      for (std::size_t k = 0; k < 3; ++k) {
        Point3 uvw;
        if (coordinates != nullptr) uvw = PointOf(coordinates[triangle.corners[k]]);
        if (!hasDepth) uvw.z = 0.0f;
        if (!IsFinite(uvw)) {
          uvw = {};
          ++leftOut_.textureCorners;
        }
        face.t[k] = textureVertices_.Add(uvw);
      }
      mesh_.tvFace.push_back(face);
    }
  }

  LeftOut& leftOut_;
  Mesh mesh_;
  PointTable positions_;
  PointTable textureVertices_;
  std::vector<CornerNormals> normals_;
  bool hasNormals_ = false;
  bool hasTexture_ = false;
  MaterialParts materials_;
};

}  // namespace

RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, LeftOut& leftOut) {
  MeshBuilder builder(leftOut);
  for (const unsigned index : meshIndices) {
    const aiMesh* mesh =
        scene.mMeshes != nullptr && index < scene.mNumMeshes ? scene.mMeshes[index] : nullptr;
    if (mesh == nullptr) {
      ++leftOut.meshes;
      continue;
    }
    const unsigned material = mesh->mMaterialIndex;
    builder.Add(*mesh, material < hostMaterials.size() ? hostMaterials[material] : -1,
                index < flatFaces.size() ? flatFaces[index] : std::vector<bool>());
  }
  return builder.Finish();
}

}  // namespace mapexport
