// Objects and materials of foreign nodes, each made once.
#include "importer/rebuild/ObjectTable.h"

#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxDeform.h"
#include "importer/rebuild/FlatFaces.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/rebuild/RebuildMesh.h"

namespace mapexport {

ObjectTable::ObjectTable(const LibraryScene& source, const std::vector<int>& hostMaterials,
                         const FbxDeform* fbxDeform, MaterialTable& materials, LeftOut& leftOut)
    : source_(source),
      hostMaterials_(hostMaterials),
      fbxDeform_(fbxDeform),
      materials_(materials),
      leftOut_(leftOut),
      flatFaces_(FlatFaces(source)) {}

NodeObject ObjectTable::Find(std::span<const unsigned> meshes, std::size_t node,
                             const std::string& nodeName) {
  if (meshes.empty()) return {};
  const auto [place, isNew] = objects_.try_emplace({meshes.begin(), meshes.end()});
  Entry& entry = place->second;
  if (isNew)
    entry = Make(meshes, node, nodeName);
  else if (entry.object.mesh != nullptr)
    instances_.push_back({node, entry.firstNode, entry.parts});
  return entry.object;
}

ObjectTable::Entry ObjectTable::Make(std::span<const unsigned> meshes, std::size_t node,
                                     const std::string& nodeName) {
  Deform deform;
  if (fbxDeform_ != nullptr) {
    deform = [this, node](std::span<LibraryPart> parts) {
      if (!fbxDeform_->Apply(parts, node)) ++leftOut_.skins;
    };
  }
  RebuiltMesh rebuilt =
      RebuildMesh(*source_.scene, meshes, hostMaterials_, flatFaces_, deform, leftOut_);
  Entry entry;
  entry.firstNode = node;
  entry.object.object = SceneObject::kHelper;
  if (rebuilt.mesh == nullptr) return entry;
  entry.object = {.object = SceneObject::kMesh,
                  .mesh = std::move(rebuilt.mesh),
                  .material = materials_.OfParts(rebuilt.partMaterials, nodeName)};
  entry.parts = std::move(rebuilt.partMaterials);
  return entry;
}

}  // namespace mapexport
