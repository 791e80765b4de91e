// The library's node tree as the artist made it.
#include "importer/fbx/FoldHelperNodes.h"

#include <span>
#include <string_view>
#include <utility>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/AssembleTree.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/rebuild/UserProperties.h"
#include "scene/Scene.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

constexpr std::string_view kHelperMark = "$AssimpFbx$";
constexpr std::string_view kGeometricMark = "$AssimpFbx$_Geometric";

std::span<aiNode* const> ChildrenOf(const aiNode& node) {
  if (node.mChildren == nullptr) return {};
  return {node.mChildren, node.mNumChildren};
}

bool HasMeshes(const aiNode& node) {
  return node.mMeshes != nullptr && node.mNumMeshes > 0;
}

/// Whether a bare root of that name is a reader's invention. A Collada file's root is its visual
/// scene, by any name; others are named after the file, or by its whole path.
bool IsInventedName(const LibraryScene& source, std::string_view name) {
  if (source.format == SourceFormat::kFbx || source.format == SourceFormat::kCollada) return true;
  return IsInventedRootName(source.path, name);
}

/// "Box_$AssimpFbx$_Translation" without what the library added: "Box".
std::string WithoutMark(std::string name) {
  const std::size_t mark = name.find(kHelperMark);
  if (mark == std::string::npos) return name;
  name.resize(mark);
  if (name.ends_with('_')) name.pop_back();
  return name;
}

/// A node on its way into the list.
struct Visit {
  const aiNode* node;
  int parent;
  int depth;  ///< level that the node would have, the scene's root being level 1
  AffineMatrix above;
  AffineMatrix geometric;  ///< of the helper nodes above it
};

class Folder {
 public:
  Folder(const LibraryScene& source, LeftOut& leftOut) : source_(source), leftOut_(leftOut) {}

  std::vector<FoldedNode> Run() {
    visits_.push_back({source_.scene->mRootNode, -1, 2, {}, {}});
    while (!visits_.empty()) {
      const Visit visit = visits_.back();
      visits_.pop_back();
      Enter(visit);
    }
    return std::move(nodes_);
  }

 private:
  void Enter(const Visit& visit) {
    const aiNode& node = *visit.node;
    AffineMatrix world = visit.above * AffineFrom(node.mTransformation);
    if (!IsUsable(world)) {
      world = visit.above;
      ++leftOut_.transforms;
    }
    std::string name = source_.Text(node.mName);
    // With a mesh of its own it is no helper; it only must not keep the name of one.
    const bool isHelper = name.find(kHelperMark) != std::string::npos && !HasMeshes(node);
    if (isHelper || IsDropped(visit, name)) {
      AffineMatrix geometric = visit.geometric;
      // What is "...Inverse" takes the offset away again, from the children.
      if (name.find(kGeometricMark) != std::string::npos && !name.ends_with("Inverse")) {
        geometric = geometric * AffineFrom(node.mTransformation);
      }
      PushChildren(node, visit.parent, visit.depth, world, geometric);
      return;
    }
    if (visit.depth > kMaxSceneDepth) {
      throw SceneError(
          fmt::format("{}: nodes are nested deeper than {} levels", source_.path, kMaxSceneDepth));
    }
    nodes_.push_back({&node, visit.parent, WithoutMark(std::move(name)), world, visit.geometric});
    PushChildren(node, static_cast<int>(nodes_.size()) - 1, visit.depth + 1, world, {});
  }

  /// Whether the node only stands for the root that the host's scene has anyway.
  bool IsDropped(const Visit& visit, std::string_view name) const {
    const aiNode& node = *visit.node;
    if (visit.parent != -1 || HasMeshes(node) || !UserPropertyText(source_, node).empty())
      return false;
    return &node == source_.scene->mRootNode ? IsInventedName(source_, name) : name.empty();
  }

  void PushChildren(const aiNode& node, int parent, int depth, const AffineMatrix& world,
                    const AffineMatrix& geometric) {
    const std::span<aiNode* const> children = ChildrenOf(node);
    for (std::size_t i = children.size(); i-- > 0;) {
      if (children[i] != nullptr) visits_.push_back({children[i], parent, depth, world, geometric});
    }
  }

  const LibraryScene& source_;
  LeftOut& leftOut_;
  std::vector<Visit> visits_;  // the next one at the back
  std::vector<FoldedNode> nodes_;
};

}  // namespace

std::vector<FoldedNode> FoldHelperNodes(const LibraryScene& source, LeftOut& leftOut) {
  return Folder(source, leftOut).Run();
}

}  // namespace mapexport
