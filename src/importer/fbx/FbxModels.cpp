// The models of an FBX file behind the nodes of the library's scene.
#include "importer/fbx/FbxModels.h"

#include <unordered_set>
#include <utility>

#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FoldHelperNodes.h"

namespace mapexport {
namespace {

/// The number of a property that is named so; `fallback` when there is none.
double NumberOf(const FbxObject& object, std::string_view name, double fallback) {
  for (const FbxProperty& property : object.properties) {
    if (property.name == name && property.number) return *property.number;
  }
  return fallback;
}

}  // namespace

FbxModels::FbxModels(const LibraryScene& source, const std::vector<FoldedNode>& nodes)
    : source_(source), text_(source.path), modelOf_(nodes.size()) {
  if (std::optional<FbxLinks> file = ReadFbxLinks(text_.View())) file_ = std::move(*file);
  FollowLinks();
  MatchNodes(nodes);
}

std::string FbxModels::HostName(const FbxObject& object) const {
  return source_.Text(object.name);
}

const FbxModels::Ids& FbxModels::Below(const IdsOf& ids, std::int64_t parent) {
  static const Ids kNone;
  const auto found = ids.find(parent);
  return found == ids.end() ? kNone : found->second;
}

void FbxModels::FollowLinks() {
  for (const FbxObject& object : file_.objects) objectOf_.emplace(object.id, &object);
  for (const FbxLink& link : file_.links) {
    const auto child = objectOf_.find(link.child);
    if (child == objectOf_.end()) continue;
    const FbxObject::Kind kind = child->second->kind;
    (kind == FbxObject::Kind::kModel      ? modelsBelow_
     : kind == FbxObject::Kind::kMaterial ? materialsOf_
     : kind == FbxObject::Kind::kDeformer ? deformersOf_
                                          : geometriesOf_)[link.parent]
        .push_back(link.child);
  }
}

/// Goes down both trees. Of one name below one parent there have to be as many models as nodes.
void FbxModels::MatchNodes(const std::vector<FoldedNode>& nodes) {
  std::vector<std::vector<std::size_t>> nodesBelow(nodes.size() + 1);  // the root's first
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    nodesBelow[static_cast<std::size_t>(nodes[i].parent) + 1].push_back(i);
  }
  for (std::size_t p = 0; p < nodesBelow.size(); ++p) {
    if (nodesBelow[p].empty() || (p > 0 && modelOf_[p - 1] == nullptr)) continue;
    struct Namesakes {
      std::vector<const FbxObject*> models;
      std::vector<std::size_t> nodes;
    };
    std::unordered_map<std::string, Namesakes> byName;
    for (const std::int64_t id : Below(modelsBelow_, p == 0 ? 0 : modelOf_[p - 1]->id)) {
      const FbxObject* model = objectOf_.at(id);
      byName[HostName(*model)].models.push_back(model);
    }
    for (const std::size_t node : nodesBelow[p]) byName[nodes[node].name].nodes.push_back(node);
    for (const auto& [name, same] : byName) {
      if (same.models.size() != same.nodes.size()) continue;
      for (std::size_t i = 0; i < same.nodes.size(); ++i) modelOf_[same.nodes[i]] = same.models[i];
    }
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (modelOf_[i] == nullptr) continue;
    const auto [entry, isNew] = nodeOf_.try_emplace(modelOf_[i]->id, i);
    if (!isNew) entry->second.reset();
  }
}

FbxModels::Ids FbxModels::SubDeformersOf(const FbxObject& model) const {
  Ids found;
  std::unordered_set<std::int64_t> seen;
  for (const std::int64_t geometry : GeometriesOf(model.id)) {
    if (!seen.insert(geometry).second) continue;
    for (const std::int64_t deformer : Below(deformersOf_, geometry)) {
      if (!seen.insert(deformer).second) continue;
      for (const std::int64_t sub : Below(deformersOf_, deformer)) {
        if (seen.insert(sub).second) found.push_back(sub);
      }
    }
  }
  return found;
}

std::unordered_map<std::string, double> FbxModels::ShapeWeightsOf(const FbxObject& model) const {
  std::unordered_map<std::string, double> weights;
  std::unordered_map<std::string, double> laterNames;
  for (const std::int64_t channel : SubDeformersOf(model)) {
    const Ids& shapes = GeometriesOf(channel);
    if (shapes.size() != 1) continue;
    const FbxObject& key = *objectOf_.at(channel);
    const std::string& shape = objectOf_.at(shapes[0])->name;
    const double weight = NumberOf(key, "DeformPercent", 0) / 100;
    weights.emplace(shape, weight);
    laterNames.emplace(key.name.find('.') == std::string::npos ? key.name + "." + shape : key.name,
                       weight);
  }
  weights.merge(laterNames);  // what is there stays
  return weights;
}

std::unordered_map<std::string_view, FbxModels::Bone> FbxModels::BonesOf(
    const FbxObject& model) const {
  std::unordered_map<std::string_view, std::int64_t> idOf;
  std::unordered_map<std::string_view, Bone> bones;
  for (const std::int64_t cluster : SubDeformersOf(model)) {
    const std::optional<AffineMatrix>& bind = objectOf_.at(cluster)->bind;
    for (const std::int64_t id : Below(modelsBelow_, cluster)) {
      const std::string_view name = objectOf_.at(id)->name;
      const auto node = nodeOf_.find(id);
      const auto [bone, isNew] = bones.try_emplace(
          name, Bone{.node = node == nodeOf_.end() ? std::nullopt : node->second, .bind = bind});
      if (idOf.try_emplace(name, id).first->second != id) bone->second.node.reset();
      if (bone->second.bind != bind) bone->second.bind.reset();
    }
  }
  return bones;
}

UserText FbxModels::TextOf(const FbxObject& model) const {
  UserText text;
  AddProperties(model, text);
  for (const std::int64_t id : GeometriesOf(model.id)) AddProperties(*objectOf_.at(id), text);
  return text;
}

void FbxModels::AddProperties(const FbxObject& object, UserText& text) const {
  for (const FbxProperty& property : object.properties) {
    if (property.text && UserText::IsTextName(property.name)) {
      text.AddText(source_.Text(*property.text));
      continue;
    }
    text.AddProperty(source_.Text(property.name),
                     property.text     ? PropertyOfText(source_.Text(*property.text))
                     : property.number ? PropertyOfNumber(*property.number)
                                       : PropertyOfKind("neither a number nor text"));
  }
}

std::vector<bool> FbxModels::HiddenNodes(const std::vector<FoldedNode>& nodes) const {
  std::vector<bool> isHidden(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const FbxObject* model = modelOf_[i];
    const bool inherits = !source_.isFromBlender && nodes[i].parent >= 0 &&
                          (model == nullptr || NumberOf(*model, "Visibility Inheritance", 1) != 0);
    isHidden[i] = (model != nullptr && NumberOf(*model, "Visibility", 1) == 0) ||
                  (inherits && isHidden[static_cast<std::size_t>(nodes[i].parent)]);
  }
  return isHidden;
}

}  // namespace mapexport
