// Makes one host mesh of the library's meshes of a node.
#pragma once

#include <span>
#include <vector>

#include "importer/rebuild/MeshBuilder.h"

struct aiScene;

namespace mapexport {

struct LeftOut;

/// Joins the meshes `meshIndices` of `scene`, in that order, as MeshBuilder does. Faces that
/// `flatFaces` marks, by the library's mesh, are flat; a mesh may have no marks. `hostMaterials`
/// gives the host's material index by the library's.
RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, LeftOut& leftOut);

}  // namespace mapexport
