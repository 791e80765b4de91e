#include "importer/FinishScene.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/LimitRemarks.h"
#include "importer/text/HostText.h"
#include "scene/NearKeywords.h"

namespace mapexport {
namespace {

template <class Node, class Visitor>
void VisitNodes(Node& node, const Visitor& visit) {
  visit(node);
  for (auto& child : node.children) VisitNodes(child, visit);
}

std::size_t TriangleCount(const SceneNode& root) {
  std::size_t count = 0;
  VisitNodes(root, [&](const SceneNode& node) {
    if (node.mesh != nullptr) count += node.mesh->faces.size();
  });
  return count;
}

/// Returns how many Standard materials were dropped. Multi/Sub-Object materials are always used.
std::size_t DropUnusedMaterials(Scene& scene) {
  std::vector<bool> isUsed(scene.materials.size());
  const auto use = [&](int index) {
    if (index >= 0) isUsed[static_cast<std::size_t>(index)] = true;
  };
  VisitNodes(scene.root, [&](const SceneNode& node) {
    use(node.material);
    if (node.material < 0) return;
    for (const int part : scene.materials[static_cast<std::size_t>(node.material)].subMaterials) {
      use(part);
    }
  });

  std::vector<int> newIndex(scene.materials.size(), -1);
  std::vector<SceneMaterial> kept;
  for (std::size_t i = 0; i < scene.materials.size(); ++i) {
    if (!isUsed[i]) continue;
    newIndex[i] = static_cast<int>(kept.size());
    kept.push_back(std::move(scene.materials[i]));
  }
  const std::size_t dropped = scene.materials.size() - kept.size();
  const auto renumber = [&](int& index) {
    if (index >= 0) index = newIndex[static_cast<std::size_t>(index)];
  };
  for (SceneMaterial& material : kept) {
    for (int& part : material.subMaterials) renumber(part);
  }
  VisitNodes(scene.root, [&](SceneNode& node) { renumber(node.material); });
  scene.materials = std::move(kept);
  return dropped;
}

bool LookSame(const SceneMaterial& a, const SceneMaterial& b) {
  const auto mapsSame = [](const SceneTexture& x, const SceneTexture& y) {
    return x.isBitmap == y.isBitmap && x.file == y.file && x.uvTransform == y.uvTransform;
  };
  return a.ambient == b.ambient && a.diffuse == b.diffuse && a.specular == b.specular &&
         a.opacity == b.opacity && a.shininess == b.shininess &&
         a.shininessStrength == b.shininessStrength && a.shading == b.shading &&
         a.twoSided == b.twoSided && a.diffuseMap.has_value() == b.diffuseMap.has_value() &&
         (!a.diffuseMap || mapsSame(*a.diffuseMap, *b.diffuseMap));
}

void WarnOfEqualNames(const Scene& scene, Remarks& remarks) {
  std::unordered_map<std::string_view, const SceneMaterial*> firstOf;
  std::size_t count = 0;
  std::string_view name;
  for (const SceneMaterial& material : scene.materials) {
    if (material.materialClass != SceneMaterialClass::kStandard) continue;
    const auto [entry, isNew] = firstOf.try_emplace(material.name, &material);
    if (isNew || LookSame(*entry->second, material)) continue;
    if (count++ == 0) name = material.name;
  }
  if (count == 0) return;
  remarks.push_back(
      MakeWarning("equal-material-names",
                  fmt::format("{} unlike an earlier one with the same name (\"{}\"{}); exporters "
                              "take the first for both",
                              count == 1 ? "1 material is" : fmt::format("{} materials are", count),
                              name, count == 1 ? "" : ", ..."),
                  count));
}

void BlankNames(ImportedScene& imported) {
  const std::uint64_t count = BlankControlCharacters(imported.scene);
  if (count == 0) return;
  imported.remarks.push_back(MakeWarning(
      "control-characters",
      fmt::format("{} in names of nodes, materials or textures",
                  count == 1 ? "a blank replaces 1 control character"
                             : fmt::format("blanks replace {} control characters", count)),
      count));
}

}  // namespace

std::uint64_t BlankControlCharacters(Scene& scene) {
  std::uint64_t count = 0;
  VisitNodes(scene.root, [&](SceneNode& node) { count += BlankControlCodes(node.name); });
  for (SceneMaterial& material : scene.materials) {
    count += BlankControlCodes(material.name);
    if (material.diffuseMap) count += BlankControlCodes(material.diffuseMap->file);
  }
  return count;
}

void FinishScene(ImportedScene& imported, LeftOut& leftOut) {
  BlankNames(imported);
  for (NearKeyword& near : FindNearKeywords(imported.scene)) {
    imported.remarks.push_back(Describe(std::move(near)));
  }
  leftOut.materials += DropUnusedMaterials(imported.scene);
  WarnOfEqualNames(imported.scene, imported.remarks);
  if (TriangleCount(imported.scene.root) == 0) {
    imported.remarks.push_back(MakeWarning("no-triangle", "the scene has no triangle"));
  }
  imported.leftOut = leftOut.Items();
  leftOut.AddSummary(imported.remarks);
  LimitRemarks(imported.remarks);
}

}  // namespace mapexport
