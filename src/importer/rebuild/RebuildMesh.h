// Makes one host mesh of the library's meshes of a node.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "importer/rebuild/MeshBuilder.h"

struct aiMesh;
struct aiScene;

namespace mapexport {

struct LeftOut;

/// One of the library's meshes on its way into a host mesh.
struct LibraryPart {
  const aiMesh* mesh = nullptr;
  std::size_t index = 0;  ///< among the library's meshes
  std::vector<Point3> positions;
  std::vector<Point3> normals;  ///< as many, or none
};

/// Moves the positions of a node's parts, and turns their normals.
using Deform = std::function<void(std::span<LibraryPart>)>;

/// Joins the meshes `meshIndices` of `scene`, in that order, as MeshBuilder does. Faces that
/// `flatFaces` marks, by the library's mesh, are flat; a mesh may have no marks. `hostMaterials`
/// gives the host's material index by the library's. `deform` may be empty.
RebuiltMesh RebuildMesh(const aiScene& scene, std::span<const unsigned> meshIndices,
                        const std::vector<int>& hostMaterials,
                        const std::vector<std::vector<bool>>& flatFaces, const Deform& deform,
                        LeftOut& leftOut);

}  // namespace mapexport
