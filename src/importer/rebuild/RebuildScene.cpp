// The nodes, meshes and materials of a scene that the library has read.
#include "importer/rebuild/RebuildScene.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/HiddenNodes.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/ase/ReadAse.h"
#include "importer/fbx/FbxDeform.h"
#include "importer/fbx/FbxModels.h"
#include "importer/fbx/FoldHelperNodes.h"
#include "importer/fbx/InstanceMaterials.h"
#include "importer/rebuild/AssembleTree.h"
#include "importer/rebuild/AxesAndUnits.h"
#include "importer/rebuild/ImportMaterials.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/rebuild/MaterialTable.h"
#include "importer/rebuild/ObjectTable.h"
#include "importer/rebuild/UserProperties.h"
#include "importer/text/HostText.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

std::span<const unsigned> MeshesOf(const aiNode& node) {
  if (node.mMeshes == nullptr) return {};
  return {node.mMeshes, node.mNumMeshes};
}

/// Gives the nodes that share a mesh the materials that the file has for each of them.
void SetInstanceMaterials(const InstanceMaterials& file, const std::vector<MeshInstance>& instances,
                          MaterialTable& materials, std::vector<SceneNode>& nodes,
                          Remarks& remarks) {
  std::size_t inDoubt = 0;
  for (const MeshInstance& instance : instances) {
    SceneNode& node = nodes[instance.node];
    if (const std::optional<std::vector<int>> parts = file.PartsOf(instance))
      node.material = materials.OfParts(*parts, node.name);
    else
      ++inDoubt;
  }
  if (inDoubt == 0) return;
  remarks.push_back(MakeWarning(
      "shared-mesh-materials",
      fmt::format("{} the material of the first node with the same mesh: which is "
                  "their own can't be told",
                  inDoubt == 1 ? "1 node shows" : fmt::format("{} nodes show", inDoubt)),
      inDoubt));
}

/// The geometries of an FBX file that the library makes nothing of: curves and curved surfaces.
std::size_t FbxCurves(const FbxLinks& file) {
  constexpr std::array<std::string_view, 4> kRead{"Mesh", "Shape", "Line", ""};
  const auto isCurve = [&](const FbxObject& object) {
    return object.kind == FbxObject::Kind::kGeometry &&
           std::ranges::find(kRead, object.className) == kRead.end();
  };
  return static_cast<std::size_t>(std::ranges::count_if(file.objects, isCurve));
}

/// Sets the user property texts of an FBX file's nodes; those that `isSkipped` have none.
void SetUserProperties(const LibraryScene& source, const FbxModels& models,
                       const std::vector<FoldedNode>& folded, const std::vector<bool>& isSkipped,
                       std::vector<SceneNode>& nodes, Remarks& remarks) {
  std::size_t inDoubt = 0;
  IdleProperties idle;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    SceneNode& node = nodes[i];
    if (isSkipped[i]) continue;
    if (const FbxObject* model = models.ModelOf(i)) {
      const UserText text = models.TextOf(*model);
      idle.Add(text, node.name);
      node.userProperties = text.Text();
    } else {
      node.userProperties = UserPropertyText(source, *folded[i].node);
      ++inDoubt;
    }
  }
  idle.AddRemarks(remarks);
  if (inDoubt == 0) return;
  remarks.push_back(MakeWarning(
      "properties-in-doubt",
      fmt::format("{} not found in the file again: custom properties that are named like keywords "
                  "and visibility don't count there, and user property text may be cut",
                  inDoubt == 1 ? "1 node was" : fmt::format("{} nodes were", inDoubt)),
      inDoubt));
}

/// The library cuts names too, or, worse, gives longer ones none.
void WarnOfCutNames(const std::vector<SceneNode>& nodes,
                    const std::vector<SceneMaterial>& materials, Remarks& remarks) {
  constexpr std::size_t kLongest = sizeof(aiString::data) - 1;
  const auto isCut = [](const auto& named) { return named.name.size() >= kLongest; };
  const auto count = static_cast<std::size_t>(std::ranges::count_if(nodes, isCut) +
                                              std::ranges::count_if(materials, isCut));
  if (count == 0) return;
  remarks.push_back(MakeWarning(
      "cut-name",
      fmt::format("{} probably cut: the reader keeps {} bytes of a name, and may lose a node whose "
                  "name is longer",
                  count == 1 ? "1 name is" : fmt::format("{} names are", count), kLongest),
      count));
}

}  // namespace

void RebuildScene(const LibraryScene& source, const ImportOptions& options, ImportedScene& result,
                  LeftOut& leftOut) {
  result.sideFiles = source.sideFiles;
  for (const std::string& file : source.missingFiles) {
    result.remarks.push_back(MakeWarning(
        "missing-side-file",
        fmt::format("the file \"{}\" that the scene names can't be opened", FirstLine(file))));
  }
  leftOut.curves = source.cutShapes;
  leftOut.objects = source.cutBlocks;
  leftOut.corners = source.cutCorners;
  leftOut.cameras = source.scene->mNumCameras;
  leftOut.lights = source.scene->mNumLights;
  leftOut.animations = source.scene->mNumAnimations;
  const WorldPlacement placement =
      FindWorldPlacement(source.format, source.scene.get(), options, result.remarks);
  const std::vector<FoldedNode> folded = FoldHelperNodes(source, leftOut);
  std::optional<FbxModels> fbx;
  if (source.format == SourceFormat::kFbx) {
    fbx.emplace(source, folded);
    leftOut.curves += FbxCurves(fbx->File());
  }
  ImportedMaterials imported = ImportMaterials(source);
  MaterialTable materials(std::move(imported.materials));
  std::optional<FbxDeform> deform;
  if (fbx) deform.emplace(*fbx, folded);
  ObjectTable objects(source, imported.hostIndex, deform ? &*deform : nullptr, materials, leftOut);

  std::vector<SceneNode> nodes(folded.size());
  for (std::size_t i = 0; i < folded.size(); ++i) {
    SceneNode& node = nodes[i];
    node.name = folded[i].name;
    node.objectTransform = HostTransform(folded[i].world, placement);
    NodeObject object = objects.Find(MeshesOf(*folded[i].node), i, node.name);
    node.object = object.object;
    node.mesh = std::move(object.mesh);
    node.material = object.material;
  }
  if (fbx) {
    if (!objects.Instances().empty()) {
      InstanceMaterials file(source, *fbx, imported.hostIndex);
      file.LearnForgotten(objects.Instances(), options, materials);
      SetInstanceMaterials(file, objects.Instances(), materials, nodes, result.remarks);
    }
    std::vector<bool> isHidden = fbx->HiddenNodes(folded);
    HandleHiddenNodes(isHidden, options, nodes, result.remarks, leftOut);
    if (!options.skipHidden) isHidden.assign(nodes.size(), false);
    SetUserProperties(source, *fbx, folded, isHidden, nodes, result.remarks);
  }
  if (source.format == SourceFormat::kAse) {
    const WireColours colours = ReadAseWireColours(FileText(source.path).View());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const auto colour = colours.find(std::string(BytesOf(folded[i].node->mName)));
      if (colour != colours.end()) nodes[i].wireColor = colour->second;
    }
  }
  result.scene.materials = materials.Take();
  WarnOfCutNames(nodes, result.scene.materials, result.remarks);
  std::vector<int> parents;
  parents.reserve(folded.size());
  for (const FoldedNode& node : folded) parents.push_back(node.parent);
  AssembleTree(parents, std::move(nodes), result.scene.root);
}

}  // namespace mapexport
