// The materials of FBX nodes that share a mesh.
#include "importer/fbx/InstanceMaterials.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <assimp/scene.h>

#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/rebuild/ObjectTable.h"
#include "scene/SceneError.h"

namespace mapexport {

InstanceMaterials::InstanceMaterials(const LibraryScene& source, const FbxModels& models,
                                     const std::vector<int>& hostMaterials)
    : source_(source), models_(models) {
  FindUniqueNames();
  std::unordered_set<std::int64_t> seen;
  for (std::size_t i = 0; i < hostMaterials.size(); ++i) {
    if (hostMaterials[i] < 0) continue;
    aiString name;
    source.scene->mMaterials[i]->Get(AI_MATKEY_NAME, name);
    const auto id = idByName_.find(source.Text(name));
    if (id == idByName_.end() || !id->second) continue;
    if (seen.insert(*id->second).second)
      hostOf_.emplace(*id->second, hostMaterials[i]);
    else
      hostOf_.erase(*id->second);
  }
}

/// A name that occurs twice belongs to no material.
void InstanceMaterials::FindUniqueNames() {
  for (const FbxObject& object : models_.File().objects) {
    if (object.kind != FbxObject::Kind::kMaterial) continue;
    const auto [entry, isNew] = idByName_.try_emplace(models_.HostName(object), object.id);
    if (!isNew) entry->second.reset();
  }
}

void InstanceMaterials::LearnForgotten(const std::vector<MeshInstance>& instances,
                                       const ImportOptions& options, MaterialTable& materials) {
  for (int reading = 0; reading < kMostReadings; ++reading) {
    const std::unordered_map<std::int64_t, std::int64_t> modelOf = ChooseModels(instances);
    if (modelOf.empty()) return;
    std::string text(models_.FileView());
    for (const FbxLink& link : models_.File().links) {
      const auto chosen = modelOf.find(link.child);
      // A connection of two properties is one that the library doesn't follow.
      if (chosen != modelOf.end() && chosen->second != link.parent) {
        text.replace(link.typeAt, 2, "PP");
      }
    }
    for (SceneMaterial& material : MaterialsOf(text, options)) {
      const auto id = idByName_.find(material.name);
      if (id == idByName_.end() || !id->second || hostOf_.contains(*id->second)) continue;
      hostOf_.emplace(*id->second, materials.Add(std::move(material)));
    }
  }
}

/// None when the library refuses this form of the file: the nodes' materials then stay in doubt,
/// which is told.
std::vector<SceneMaterial> InstanceMaterials::MaterialsOf(const std::string& text,
                                                          const ImportOptions& options) const {
  try {
    return ImportMaterials(ReadFbxText(source_, text, options)).materials;
  } catch (const SceneError&) {
    return {};
  }
}

/// For each geometry with a node that has forgotten materials, the model of one such node; no node
/// twice in its life.
std::unordered_map<std::int64_t, std::int64_t> InstanceMaterials::ChooseModels(
    const std::vector<MeshInstance>& instances) {
  std::unordered_map<std::int64_t, std::int64_t> chosen;
  for (const MeshInstance& instance : instances) {
    const FbxObject* model = models_.ModelOf(instance.node);
    if (model == nullptr || tried_.contains(instance.node)) continue;
    const bool isKnown = std::ranges::all_of(models_.MaterialsOf(model->id),
                                             [&](std::int64_t id) { return hostOf_.contains(id); });
    const Ids& geometries = models_.GeometriesOf(model->id);
    if (isKnown || geometries.size() != 1) continue;
    if (chosen.try_emplace(geometries.front(), model->id).second) tried_.insert(instance.node);
  }
  return chosen;
}

std::optional<std::vector<int>> InstanceMaterials::PartsOf(const MeshInstance& instance) const {
  const FbxObject* firstModel = models_.ModelOf(instance.firstNode);
  const FbxObject* ownModel = models_.ModelOf(instance.node);
  if (firstModel == nullptr || ownModel == nullptr) return std::nullopt;
  const Ids& first = models_.MaterialsOf(firstModel->id);
  const Ids& own = models_.MaterialsOf(ownModel->id);
  if (first == own) return instance.parts;
  if (std::unordered_set<std::int64_t>(first.begin(), first.end()).size() != first.size()) {
    return std::nullopt;
  }
  std::vector<int> parts;
  for (const int part : instance.parts) {
    const std::optional<int> ownPart = PartOf(part, first, own);
    if (!ownPart) return std::nullopt;
    parts.push_back(*ownPart);
  }
  return parts;
}

/// The host material in `own` at the position that `part` has in `first`.
std::optional<int> InstanceMaterials::PartOf(int part, const Ids& first, const Ids& own) const {
  std::size_t place = 0;
  if (part >= 0) {
    const auto found = std::ranges::find_if(first, [&](std::int64_t id) {
      const auto host = hostOf_.find(id);
      return host != hostOf_.end() && host->second == part;
    });
    if (found == first.end()) return std::nullopt;
    place = static_cast<std::size_t>(found - first.begin());
  } else if (!first.empty() || own.size() > 1) {
    return std::nullopt;
  }
  if (place >= own.size()) return -1;
  const auto host = hostOf_.find(own[place]);
  if (host == hostOf_.end()) return std::nullopt;
  return host->second;
}

}  // namespace mapexport
