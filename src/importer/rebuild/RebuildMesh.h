// Makes one host mesh of the library's meshes of a node.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "importer/rebuild/MeshBuilder.h"

struct aiMesh;
struct aiScene;

namespace mapexport {

struct LeftOut;

/// Moves the positions of one of the library's meshes, and turns its normals, if it has any.
using Deform = std::function<void(const aiMesh&, std::vector<Point3>& positions,
                                  std::vector<Point3>& normals)>;

/// Joins the meshes `meshIndices` of `scene`, in that order, as MeshBuilder does. Faces that
/// `flatFaces` marks, by the library's mesh, are flat; a mesh may have no marks. `hostMaterials`
/// gives the host's material index by the library's. `deform` may be empty.
RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, const Deform& deform,
                        LeftOut& leftOut);

}  // namespace mapexport
