// Foreign scene formats into the host's scene: the order of the steps.
#include "importer/ImportScene.h"

#include <algorithm>
#include <exception>
#include <new>
#include <span>
#include <utility>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/AxesAndUnits.h"
#include "importer/FoldHelperNodes.h"
#include "importer/HostText.h"
#include "importer/LeftOut.h"
#include "importer/ObjectTable.h"
#include "importer/ReadWithLibrary.h"
#include "importer/UserProperties.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

constexpr std::string_view kRootName = "Scene Root";

std::span<const unsigned> MeshesOf(const aiNode& node) {
  if (node.mMeshes == nullptr) return {};
  return {node.mMeshes, node.mNumMeshes};
}

/// Hangs `nodes`, which stand in the pre-order that `folded` describes, below `root`.
void AssembleTree(const std::vector<FoldedNode>& folded, std::vector<SceneNode> nodes,
                  SceneNode& root) {
  // From the back, a node is complete when its turn comes; its children are in reverse until then.
  for (std::size_t i = nodes.size(); i-- > 0;) {
    std::ranges::reverse(nodes[i].children);
    SceneNode& parent =
        folded[i].parent < 0 ? root : nodes[static_cast<std::size_t>(folded[i].parent)];
    parent.children.push_back(std::move(nodes[i]));
  }
  std::ranges::reverse(root.children);
}

ImportedScene Import(const std::string& path) {
  ImportedScene result;
  const LibraryScene source = ReadWithLibrary(path);
  for (const std::string& file : source.missingFiles) {
    result.warnings.push_back(
        fmt::format("the file \"{}\" that the scene names can't be opened", file));
  }

  LeftOut leftOut;
  leftOut.cameras = source.scene->mNumCameras;
  leftOut.lights = source.scene->mNumLights;
  const WorldPlacement placement = FindWorldPlacement(source, result.warnings);
  const std::vector<FoldedNode> folded = FoldHelperNodes(source, leftOut);
  ObjectTable objects(source, leftOut);

  std::vector<SceneNode> nodes(folded.size());
  for (std::size_t i = 0; i < folded.size(); ++i) {
    SceneNode& node = nodes[i];
    node.name = folded[i].name;
    node.objectTransform = HostTransform(folded[i].world, placement);
    node.userProperties = UserPropertyText(source, *folded[i].node);
    NodeObject object = objects.Find(MeshesOf(*folded[i].node), node.name);
    node.object = object.object;
    node.mesh = std::move(object.mesh);
    node.material = object.material;
  }
  result.scene.root.name = kRootName;
  AssembleTree(folded, std::move(nodes), result.scene.root);
  result.scene.materials = objects.TakeMaterials();

  if (source.format == SourceFormat::kFbx && objects.InstanceCount() > 0) {
    result.warnings.push_back(fmt::format(
        "nodes that share a mesh show the material of the first of them ({} do): the FBX "
        "reader drops the others'",
        objects.InstanceCount()));
  }
  if (objects.TriangleCount() == 0) result.warnings.emplace_back("the scene has no triangle");
  if (std::string summary = leftOut.Summary(); !summary.empty()) {
    result.warnings.push_back(std::move(summary));
  }
  return result;
}

}  // namespace

ImportedScene ImportScene(const std::string& path) {
  try {
    return Import(path);
  } catch (const SceneError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw SceneError(path + ": needs more memory to read than there is");
  } catch (const std::exception& error) {
    throw SceneError(fmt::format("{}: {}", path, FirstLine(error.what())));
  } catch (...) {
    throw SceneError(path + ": the reader failed without a reason");
  }
}

}  // namespace mapexport
