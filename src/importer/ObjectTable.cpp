// Objects and materials of foreign nodes, each made once.
#include "importer/ObjectTable.h"

#include "importer/ImportMaterials.h"
#include "importer/ReadWithLibrary.h"
#include "importer/RebuildMesh.h"

namespace mapexport {

ObjectTable::ObjectTable(const LibraryScene& source, LeftOut& leftOut)
    : source_(source), leftOut_(leftOut) {
  ImportedMaterials imported = ImportMaterials(source);
  materials_ = std::move(imported.materials);
  hostMaterials_ = std::move(imported.hostIndex);
}

NodeObject ObjectTable::Find(std::span<const unsigned> meshes, const std::string& nodeName) {
  if (meshes.empty()) return {};
  const auto [entry, isNew] = objects_.try_emplace({meshes.begin(), meshes.end()});
  if (isNew)
    entry->second = Make(meshes, nodeName);
  else if (entry->second.mesh != nullptr)
    ++instanceCount_;
  return entry->second;
}

NodeObject ObjectTable::Make(std::span<const unsigned> meshes, const std::string& nodeName) {
  RebuiltMesh rebuilt = RebuildMesh(*source_.scene, meshes, hostMaterials_, leftOut_);
  if (rebuilt.mesh == nullptr)
    return {.object = SceneObject::kHelper, .mesh = nullptr, .material = -1};
  triangleCount_ += rebuilt.mesh->faces.size();
  return {.object = SceneObject::kMesh,
          .mesh = std::move(rebuilt.mesh),
          .material = MaterialOfParts(rebuilt.partMaterials, nodeName)};
}

int ObjectTable::MaterialOfParts(const std::vector<int>& parts, const std::string& nodeName) {
  if (parts.size() == 1) return parts.front();
  const auto [entry, isNew] =
      multiMaterials_.try_emplace(parts, static_cast<int>(materials_.size()));
  if (isNew) {
    SceneMaterial multi;
    multi.materialClass = SceneMaterialClass::kMulti;
    multi.name = nodeName;
    multi.subMaterials = parts;
    materials_.push_back(std::move(multi));
  }
  return entry->second;
}

}  // namespace mapexport
