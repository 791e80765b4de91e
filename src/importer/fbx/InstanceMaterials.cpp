// The materials of FBX nodes that share a mesh.
#include "importer/fbx/InstanceMaterials.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include <assimp/scene.h>

#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FoldHelperNodes.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/rebuild/ObjectTable.h"
#include "importer/text/HostText.h"
#include "scene/FileText.h"
#include "scene/SceneError.h"

namespace mapexport {

InstanceMaterials::InstanceMaterials(const LibraryScene& source,
                                     const std::vector<FoldedNode>& nodes,
                                     const std::vector<int>& hostMaterials)
    : source_(source), text_(FileText(source.path).View()), isTried_(nodes.size()) {
  std::optional<FbxLinks> links = ReadFbxLinks(text_);
  if (!links) return;
  file_ = std::move(*links);
  MatchNodes(nodes);
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

std::string InstanceMaterials::HostName(const std::string& name) const {
  return ValidUtf8(source_.hasEntities ? DecodeEntities(name) : name);
}

/// Walks the file's models as the library does and compares them with its nodes.
void InstanceMaterials::MatchNodes(const std::vector<FoldedNode>& nodes) {
  std::unordered_map<std::int64_t, const FbxObject*> objectOf;
  for (const FbxObject& object : file_.objects) objectOf.emplace(object.id, &object);
  std::unordered_map<std::int64_t, Ids> modelsBelow;
  std::unordered_map<std::int64_t, Ids> materialsOn;
  for (const FbxLink& link : file_.links) {
    const auto child = objectOf.find(link.child);
    if (child == objectOf.end()) continue;
    const FbxObject::Kind kind = child->second->kind;
    (kind == FbxObject::Kind::kModel      ? modelsBelow
     : kind == FbxObject::Kind::kMaterial ? materialsOn
                                          : geometriesOf_)[link.parent]
        .push_back(link.child);
  }

  std::vector<std::pair<std::int64_t, int>> visits;  // model and the node of its parent
  const auto pushModelsBelow = [&](std::int64_t id, int node) {
    const Ids& models = modelsBelow[id];
    for (auto model = models.rbegin(); model != models.rend(); ++model) {
      visits.emplace_back(*model, node);
    }
  };
  std::vector<std::int64_t> modelOf;
  pushModelsBelow(0, -1);
  while (!visits.empty()) {
    const auto [id, parent] = visits.back();
    visits.pop_back();
    const std::size_t node = modelOf.size();
    if (node == nodes.size() || nodes[node].parent != parent ||
        nodes[node].name != HostName(objectOf[id]->name)) {
      return;
    }
    modelOf.push_back(id);
    materialsOf_.push_back(materialsOn[id]);
    pushModelsBelow(id, static_cast<int>(node));
  }
  if (modelOf.size() == nodes.size()) modelOf_ = std::move(modelOf);
}

/// A name that occurs twice belongs to no material.
void InstanceMaterials::FindUniqueNames() {
  for (const FbxObject& object : file_.objects) {
    if (object.kind != FbxObject::Kind::kMaterial) continue;
    const auto [entry, isNew] = idByName_.try_emplace(HostName(object.name), object.id);
    if (!isNew) entry->second.reset();
  }
}

void InstanceMaterials::LearnForgotten(const std::vector<MeshInstance>& instances,
                                       const ImportOptions& options, MaterialTable& materials) {
  if (modelOf_.empty()) return;
  for (int reading = 0; reading < kMostReadings; ++reading) {
    const std::unordered_map<std::int64_t, std::int64_t> modelOf = ChooseModels(instances);
    if (modelOf.empty()) return;
    std::string text = text_;
    for (const FbxLink& link : file_.links) {
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
    const bool isKnown = std::ranges::all_of(materialsOf_[instance.node],
                                             [&](std::int64_t id) { return hostOf_.contains(id); });
    const std::int64_t model = modelOf_[instance.node];
    const Ids& geometries = geometriesOf_[model];
    if (isKnown || isTried_[instance.node] || geometries.size() != 1) continue;
    if (chosen.try_emplace(geometries.front(), model).second) isTried_[instance.node] = true;
  }
  return chosen;
}

std::optional<std::vector<int>> InstanceMaterials::PartsOf(const MeshInstance& instance) const {
  if (modelOf_.empty()) return std::nullopt;
  const Ids& first = materialsOf_[instance.firstNode];
  const Ids& own = materialsOf_[instance.node];
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
