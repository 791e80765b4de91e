#include "RebuildRuns.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "MeasuredRun.h"
#include "SplitMesh.h"
#include "importer/LeftOut.h"
#include "importer/rebuild/MeshBuilder.h"

namespace mapexport {
namespace {

struct PartOfMesh {
  std::vector<CornerIndices> triangles;
  int material;
};

struct MeshToRebuild {
  std::vector<Point3> positions;
  std::vector<Point3> normals;
  std::vector<Point3> textureCoordinates;
  std::vector<PartOfMesh> parts;
};

MeshToRebuild ToRebuild(SplitMesh split) {
  MeshToRebuild mesh{std::move(split.positions), std::move(split.normals), {}, {}};
  for (const auto& [u, v] : split.uvs) mesh.textureCoordinates.push_back({u, 1.0f - v, 0.0f});
  for (const auto& [material, corners] : split.triangles) {
    PartOfMesh& part = mesh.parts.emplace_back(PartOfMesh{{}, material});
    for (std::size_t c = 0; c < corners.size(); c += 3) {
      part.triangles.push_back({corners[c], corners[c + 1], corners[c + 2]});
    }
  }
  return mesh;
}

}  // namespace

void RegisterRebuilding(const Scene& scene) {
  const auto meshes = std::make_shared<std::vector<MeshToRebuild>>();
  for (const SceneNode& node : scene.root.children) {
    if (node.mesh != nullptr) meshes->push_back(ToRebuild(MakeSplitMesh(scene, node)));
  }
  RegisterRun(
      "rebuild", [] { return 0; },
      [meshes](int) {
        std::vector<RebuiltMesh> rebuilt;
        LeftOut leftOut;
        for (const MeshToRebuild& mesh : *meshes) {
          MeshBuilder builder(leftOut);
          for (const PartOfMesh& part : mesh.parts) {
            builder.Add({.positions = mesh.positions,
                         .normals = mesh.normals,
                         .textureCoordinates = mesh.textureCoordinates,
                         .triangles = part.triangles,
                         .isFlat = {},
                         .material = part.material});
          }
          rebuilt.push_back(builder.Finish());
        }
        return rebuilt;
      });
}

}  // namespace mapexport
