// A host mesh from the library's meshes of one node.
#include "importer/rebuild/RebuildMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <assimp/scene.h>

#include "importer/LeftOut.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

std::vector<Point3> PointsOf(const aiVector3D* vectors, std::size_t count) {
  std::vector<Point3> points;
  if (vectors == nullptr) return points;
  points.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    points.push_back({vectors[i].x, vectors[i].y, vectors[i].z});
  }
  return points;
}

/// Adds the triangles of `mesh`; counts everything else. `isFlat` by the mesh's face, or empty.
void AddTo(MeshBuilder& builder, const LibraryPart& part, int material,
           const std::vector<bool>& isFlat, LeftOut& leftOut) {
  const aiMesh& mesh = *part.mesh;
  std::vector<CornerIndices> triangles;
  std::vector<std::uint8_t> flatTriangles;
  const unsigned faceCount = mesh.mFaces == nullptr ? 0 : mesh.mNumFaces;
  triangles.reserve(faceCount);
  for (unsigned f = 0; f < faceCount; ++f) {
    const aiFace& face = mesh.mFaces[f];
    const unsigned corners = face.mIndices == nullptr ? 0 : face.mNumIndices;
    if (corners == 3) {
      triangles.push_back({face.mIndices[0], face.mIndices[1], face.mIndices[2]});
      flatTriangles.push_back(f < isFlat.size() && isFlat[f] ? 1 : 0);
    } else {
      ++(corners == 1 ? leftOut.points : corners == 2 ? leftOut.lines : leftOut.polygons);
    }
  }
  leftOut.bones += mesh.mNumBones;
  if (mesh.mColors[0] != nullptr) leftOut.colours += mesh.mNumVertices;
  if (mesh.mTextureCoords[1] != nullptr) ++leftOut.channels;

  if (triangles.empty()) {  // else those of the triangles are counted
    for (const Point3& position : part.positions) leftOut.vertices += IsFinite(position) ? 0U : 1U;
  }
  std::vector<Point3> coordinates = PointsOf(mesh.mTextureCoords[0], part.positions.size());
  if (mesh.mNumUVComponents[0] != 3) {
    for (Point3& uvw : coordinates) uvw.z = 0.0f;
  }
  builder.Add({.positions = part.positions,
               .normals = part.normals,
               .textureCoordinates = coordinates,
               .triangles = triangles,
               .isFlat = flatTriangles,
               .material = material});
}

}  // namespace

RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, const Deform& deform,
                        LeftOut& leftOut) {
  std::vector<LibraryPart> parts;
  unsigned morphs = 0;  // readers give each part of a node's mesh all of them
  for (const unsigned index : meshIndices) {
    const aiMesh* mesh =
        scene.mMeshes != nullptr && index < scene.mNumMeshes ? scene.mMeshes[index] : nullptr;
    if (mesh == nullptr) {
      ++leftOut.meshes;
      continue;
    }
    morphs = std::max(morphs, mesh->mNumAnimMeshes);
    std::vector<Point3> positions = PointsOf(mesh->mVertices, mesh->mNumVertices);
    std::vector<Point3> normals = PointsOf(mesh->mNormals, positions.size());
    parts.push_back({mesh, index, std::move(positions), std::move(normals)});
  }
  leftOut.morphs += morphs;
  if (deform) deform(parts);
  MeshBuilder builder(leftOut);
  for (const LibraryPart& part : parts) {
    const unsigned material = part.mesh->mMaterialIndex;
    AddTo(builder, part, material < hostMaterials.size() ? hostMaterials[material] : -1,
          part.index < flatFaces.size() ? flatFaces[part.index] : std::vector<bool>(), leftOut);
  }
  return builder.Finish();
}

}  // namespace mapexport
