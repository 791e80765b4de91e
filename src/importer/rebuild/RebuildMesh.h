// Makes one host mesh of the library's meshes of a node.
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
/// become one vertex, equal texture coordinates of the first channel one texture vertex; unused
/// ones are dropped. Triangles with three corners that exist and are finite are kept, in the file's
/// order; the others are counted. Smoothing groups are rebuilt from the normals (RebuildSmoothing);
/// faces that `flatFaces` marks, by the library's mesh, are flat. A mesh may have no marks.
/// `hostMaterials` has the host's material index for each of the library's. Materials beyond the
/// number of material ids share the last id (MaterialParts).
RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, LeftOut& leftOut);

}  // namespace mapexport
