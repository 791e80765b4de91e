// A host mesh from the library's meshes of one node.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "host/Mesh.h"

struct aiScene;

namespace mapexport {

struct LeftOut;

struct RebuiltMesh {
  std::shared_ptr<const Mesh> mesh;  ///< null when no triangle is left
  /// By the material id of the mesh's faces: the host's index of the material, -1 for none. Each
  /// material once, in the order of the meshes.
  std::vector<int> partMaterials;
};

/// Joins the meshes `meshIndices` of `scene`, in that order. Positions that are equal bit for bit
/// become one vertex, texture coordinates of the first channel one texture vertex; what no face
/// uses is gone. Kept are triangles with three corners that exist and are finite, in the file's
/// order; what is left out is counted. Smoothing groups are rebuilt from the normals
/// (RebuildSmoothing); faces that `flatFaces` marks, by the library's mesh, are flat. A mesh may
/// have no marks. `hostMaterials` gives the host's material index by the library's. A node with
/// more materials than there are material ids keeps the first ones; the faces of the others get the
/// last id's.
RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, LeftOut& leftOut);

}  // namespace mapexport
