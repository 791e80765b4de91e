// glTF files into the host's scene.
#include "importer/gltf/ImportGltf.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "importer/HiddenNodes.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/SourceFile.h"
#include "importer/gltf/GltfAccessors.h"
#include "importer/gltf/GltfBuffers.h"
#include "importer/gltf/GltfFile.h"
#include "importer/gltf/GltfMaterials.h"
#include "importer/gltf/GltfObjects.h"
#include "importer/gltf/GltfTransform.h"
#include "importer/gltf/ReadGltfDocument.h"
#include "importer/rebuild/AssembleTree.h"
#include "importer/rebuild/AxesAndUnits.h"
#include "importer/rebuild/MaterialTable.h"

namespace mapexport {
namespace {

/// A node on its way into the list.
struct Visit {
  int node;
  int parent;  ///< index in the list, -1 for the root
  int depth;   ///< level that the node would have, the scene's root being level 1
  bool isHidden;
};

std::vector<int> RootsOf(const GltfDocument& document) {
  if (!document.scenes.empty()) {
    return document.scenes[static_cast<std::size_t>(std::max(document.scene, 0))];
  }
  std::vector<int> roots;
  for (std::size_t i = 0; i < document.nodes.size(); ++i) {
    if (document.nodes[i].parent == kNoGltfIndex) roots.push_back(static_cast<int>(i));
  }
  return roots;
}

class Importer {
 public:
  Importer(const GltfFile& file, GltfDocument document, const ImportOptions& options,
           ImportedScene& result, LeftOut& leftOut)
      : path_(file.Path()),
        document_(std::move(document)),
        options_(options),
        result_(result),
        leftOut_(leftOut),
        placement_(FindWorldPlacement(SourceFormat::kGltf2, nullptr, options, result.remarks)),
        budget_(path_),
        buffers_(file, document_, budget_, result.sideFiles),
        accessors_(path_, document_, buffers_, budget_),
        materials_(MakeGltfMaterials(document_, budget_)),
        objects_(path_, document_, buffers_, accessors_, budget_, worlds_, materials_, leftOut) {}

  void Run() {
    leftOut_.cameras = document_.cameras;
    leftOut_.lights = document_.lights;
    leftOut_.animations = document_.animations;
    leftOut_.variants = document_.variants;
    leftOut_.scenes = document_.scenes.size() - std::min<std::size_t>(document_.scenes.size(), 1);
    FindWorlds();
    const std::vector<int> roots = RootsOf(document_);
    const bool isDropped = roots.size() == 1 && IsBareRoot(NodeAt(roots.front()));
    for (const int root : isDropped ? NodeAt(roots.front()).children : roots) {
      visits_.push_back({root, -1, 2, isDropped && NodeAt(roots.front()).isHidden});
    }
    std::ranges::reverse(visits_);
    while (!visits_.empty()) {
      const Visit visit = visits_.back();
      visits_.pop_back();
      Enter(visit);
    }
    idle_.AddRemarks(result_.remarks);
    TellHiddenNodes(hidden_, options_, result_.remarks, leftOut_);
    result_.scene.materials = materials_.Take();
    AssembleTree(parents_, std::move(nodes_), result_.scene.root);
  }

 private:
  const GltfNode& NodeAt(int index) const {
    return document_.nodes[static_cast<std::size_t>(index)];
  }

  void FindWorlds() {
    worlds_.resize(document_.nodes.size());
    std::vector<int> visits;
    for (std::size_t i = 0; i < document_.nodes.size(); ++i) {
      if (document_.nodes[i].parent == kNoGltfIndex) visits.push_back(static_cast<int>(i));
    }
    while (!visits.empty()) {
      const GltfNode& node = NodeAt(visits.back());
      AffineMatrix& world = worlds_[static_cast<std::size_t>(visits.back())];
      visits.pop_back();
      AffineMatrix above;
      if (node.parent != kNoGltfIndex) above = worlds_[static_cast<std::size_t>(node.parent)];
      world = above * node.local;
      if (!IsUsable(world)) {
        world = above;
        ++leftOut_.transforms;
      }
      visits.insert(visits.end(), node.children.begin(), node.children.end());
    }
  }

  bool IsBareRoot(const GltfNode& node) const {
    return !node.name.empty() && node.mesh == kNoGltfIndex && node.extras.IsEmpty() &&
           IsInventedRootName(path_, node.name);
  }

  /// Whether the node holds nothing but the mesh of its parent, as some programs write nodes whose
  /// mesh has other units than its children.
  bool IsMeshOfParent(const GltfNode& node) const {
    return node.name.empty() && node.mesh != kNoGltfIndex && node.parent != kNoGltfIndex &&
           !NodeAt(node.parent).name.empty() && NodeAt(node.parent).mesh == kNoGltfIndex;
  }

  /// Whether the properties of the node count at its children that hold its mesh instead.
  bool HandsDownText(const GltfNode& node) const {
    return std::ranges::any_of(node.children,
                               [this](int child) { return IsMeshOfParent(NodeAt(child)); });
  }

  std::string NameOf(int index) const {
    const GltfNode& node = NodeAt(index);
    if (IsMeshOfParent(node)) return NodeAt(node.parent).name;
    return node.name.empty() ? fmt::format("nodes[{}]", index) : node.name;
  }

  UserText TextOf(const GltfNode& node) const {
    UserText text;
    if (IsMeshOfParent(node)) text.AddEffects(NodeAt(node.parent).extras);
    text.Add(node.extras);
    if (node.mesh != kNoGltfIndex) {
      text.Add(document_.meshes[static_cast<std::size_t>(node.mesh)].extras);
    }
    return text;
  }

  void Enter(const Visit& visit) {
    const GltfNode& source = NodeAt(visit.node);
    const bool isHidden = visit.isHidden || source.isHidden;
    SceneNode node;
    node.name = NameOf(visit.node);
    if (isHidden && source.mesh != kNoGltfIndex) hidden_.push_back(node.name);
    if (!isHidden || !options_.skipHidden) {
      const UserText text = TextOf(source);
      TakeText(visit.node, text.Idle().size() * node.name.size());
      idle_.Add(text, node.name);
      if (!HandsDownText(source)) node.userProperties = text.Text();
      NodeObject object = objects_.Find(visit.node, node.name);
      node.object = object.object;
      node.mesh = std::move(object.mesh);
      node.material = object.material;
    }
    const std::vector<AffineMatrix> places = PlacesOf(source, visit.node);
    // The first place is the node's own, the others are of nodes like it below it.
    TakeText(visit.node, places.size() * (node.name.size() + node.userProperties.size()));
    const int self = Add(visit.parent, visit.depth, places.front(), node);
    for (std::size_t i = 1; i < places.size(); ++i) Add(self, visit.depth + 1, places[i], node);
    for (std::size_t i = source.children.size(); i-- > 0;) {
      visits_.push_back({source.children[i], self, visit.depth + 1, isHidden});
    }
  }

  void TakeText(int node, std::size_t bytes) {
    budget_.TakeText(bytes, fmt::format("nodes[{}]", node));
  }

  int Add(int parent, int depth, const AffineMatrix& world, const SceneNode& node) {
    if (depth > kMaxSceneDepth) {
      RefuseFile(path_, fmt::format("nodes are nested deeper than {} levels", kMaxSceneDepth));
    }
    nodes_.push_back(node);
    nodes_.back().objectTransform = HostTransform(world, placement_);
    parents_.push_back(parent);
    return static_cast<int>(nodes_.size()) - 1;
  }

  /// Where the node's mesh stands: once, or once for each of its instances.
  std::vector<AffineMatrix> PlacesOf(const GltfNode& node, int index) {
    const AffineMatrix& world = worlds_[static_cast<std::size_t>(index)];
    if (node.mesh == kNoGltfIndex) return {world};
    // The mesh is in world space; where the node is mirrored, its triangles are turned over.
    if (node.skin != kNoGltfIndex) return {AffineMatrix{}};
    if (node.instancing.empty()) return {world};
    return InstancesOf(node, index, world);
  }

  std::vector<AffineMatrix> InstancesOf(const GltfNode& node, int index, const AffineMatrix& world);

  const std::string& path_;
  GltfDocument document_;
  const ImportOptions& options_;
  ImportedScene& result_;
  LeftOut& leftOut_;
  WorldPlacement placement_;
  std::vector<AffineMatrix> worlds_;
  GltfBudget budget_;
  GltfBuffers buffers_;
  GltfAccessors accessors_;
  MaterialTable materials_;
  GltfObjects objects_;
  std::vector<Visit> visits_;     // the next one at the back
  std::vector<SceneNode> nodes_;  // in pre-order
  std::vector<int> parents_;      // of these
  IdleProperties idle_;
  std::vector<std::string> hidden_;  // names of the nodes with a mesh that the file hides
};

std::vector<AffineMatrix> Importer::InstancesOf(const GltfNode& node, int index,
                                                const AffineMatrix& world) {
  std::vector<Point3> translations;
  std::vector<std::array<float, 4>> rotations;
  std::vector<Point3> scales;
  std::size_t count = 0;
  for (const GltfAttribute& attribute : node.instancing) {
    std::size_t size = count;
    if (attribute.name == "TRANSLATION")
      size = (translations = *accessors_.Points(attribute.index)).size();
    else if (attribute.name == "ROTATION")
      size = (rotations = *accessors_.Quadruples(attribute.index)).size();
    else if (attribute.name == "SCALE")
      size = (scales = *accessors_.Points(attribute.index)).size();
    if (count != 0 && size != count) {
      RefuseFile(path_, fmt::format("nodes[{}].extensions.EXT_mesh_gpu_instancing: attributes of "
                                    "{} and {} instances",
                                    index, count, size));
    }
    count = size;
  }
  // Each one becomes a node, and nodes may share their lists of instances.
  budget_.TakeNodes(count, fmt::format("nodes[{}].extensions.EXT_mesh_gpu_instancing", index));
  std::vector<AffineMatrix> places;
  for (std::size_t i = 0; i < count; ++i) {
    const Point3 t = translations.empty() ? Point3{} : translations[i];
    const Point3 s = scales.empty() ? Point3{1, 1, 1} : scales[i];
    const std::array<float, 4> r =
        rotations.empty() ? std::array<float, 4>{0, 0, 0, 1} : rotations[i];
    AffineMatrix place = world * AffineFromParts({t.x, t.y, t.z}, r, {s.x, s.y, s.z});
    if (!IsUsable(place)) {
      place = world;
      ++leftOut_.transforms;
    }
    places.push_back(place);
  }
  if (places.empty()) places.push_back(world);
  return places;
}

}  // namespace

void ImportGltf(const GltfFile& file, const ImportOptions& options, ImportedScene& result,
                LeftOut& leftOut) {
  GltfDocument document = ReadGltfDocument(file.Path(), file.Json());
  CheckGltfDocument(file.Path(), document);
  if (options.onRead) options.onRead();
  Importer(file, std::move(document), options, result, leftOut).Run();
}

}  // namespace mapexport
