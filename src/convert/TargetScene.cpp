#include "convert/TargetScene.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "convert/BatchMesh.h"
#include "convert/ReversedCopies.h"
#include "convert/TargetMaterials.h"

namespace mapexport {

namespace {

/// The time that the library takes to join the meshes of a node grows with the square of their
/// number; for so many it is about half a second.
constexpr std::size_t kMostJoinedBatches = 2000;

/// Moves the objects into a field that owns an array of pointers.
template <class T>
void HandOver(std::vector<std::unique_ptr<T>>& objects, T**& array, unsigned& count) {
  if (objects.empty()) return;
  array = new T*[objects.size()];
  count = static_cast<unsigned>(objects.size());
  std::ranges::transform(objects, array, [](auto& object) { return object.release(); });
}

class SceneBuilder {
 public:
  SceneBuilder(const ModelFile& model, const TargetFormat& format, const TargetSpace& space,
               Changes& changes)
      : model_(model), format_(format), space_(space), changes_(changes) {
    for (const ModelMaterial& material : model.materials) {
      Changes noted;  // discarded: its corners' colours are counted
      baseColours_.push_back(BaseColour(material, noted));
      // What the format can't hold is not counted as changed.
      Changes unseen;
      materials_.push_back(TargetMaterial(material, format.hasNodes ? changes : unseen));
    }
  }

  std::unique_ptr<aiScene> Build(const std::string& name) {
    std::size_t batchCount = 0;
    for (const ModelGroup& group : model_.groups) batchCount += group.batches.size();
    joinsMaterials_ = format_.joinsMeshes && batchCount > kMostJoinedBatches;
    for (const ModelGroup& group : model_.groups) AddGroup(group);
    auto scene = std::make_unique<aiScene>();
    scene->mRootNode = new aiNode(LibraryText(name));
    for (const auto& node : nodes_) node->mParent = scene->mRootNode;
    HandOver(nodes_, scene->mRootNode->mChildren, scene->mRootNode->mNumChildren);
    HandOver(materials_, scene->mMaterials, scene->mNumMaterials);
    HandOver(meshes_, scene->mMeshes, scene->mNumMeshes);
    return scene;
  }

 private:
  void AddGroup(const ModelGroup& group) {
    const std::string name = LibraryText(group.header.name);
    std::vector<std::unique_ptr<aiMesh>> meshes;
    std::vector<std::vector<bool>> copies = ReversedCopies(model_, group);
    for (std::vector<bool>& ofBatch : copies) {
      if (format_.hasTwoSidedMaterials) {
        changes_.copies += static_cast<std::uint64_t>(std::ranges::count(ofBatch, true));
      } else {
        ofBatch.assign(ofBatch.size(), false);
      }
    }
    for (const std::vector<std::size_t>& batches : BatchesOfMeshes(group)) {
      const std::int32_t material = group.batches[batches.front()].material;
      const aiColor4D base =
          material < 0 ? aiColor4D(1, 1, 1, 1) : baseColours_[static_cast<std::size_t>(material)];
      auto mesh = BatchMesh(group, batches, copies, base, format_, space_, changes_);
      if (mesh == nullptr) continue;
      mesh->mMaterialIndex = material < 0 ? IndexOfNoMaterial() : static_cast<unsigned>(material);
      meshes.push_back(std::move(mesh));
    }
    if (!meshes.empty()) AddNode(name, std::move(meshes));

    meshes.clear();
    if (auto mesh = CollisionMesh(group, format_, space_, changes_)) {
      if (!format_.hasNodes) {
        changes_.collisionFaces += mesh->mNumFaces;
        return;
      }
      mesh->mMaterialIndex = IndexOfNoMaterial();
      meshes.push_back(std::move(mesh));
      AddNode(name + " collision", std::move(meshes));
    }
  }

  /// The batches of each mesh: one, or all of a material, in the order of its first one.
  std::vector<std::vector<std::size_t>> BatchesOfMeshes(const ModelGroup& group) const {
    std::vector<std::vector<std::size_t>> meshes;
    std::unordered_map<std::int32_t, std::size_t> meshOfMaterial;
    for (std::size_t b = 0; b < group.batches.size(); ++b) {
      const auto [mesh, isFirst] =
          meshOfMaterial.try_emplace(group.batches[b].material, meshes.size());
      if (isFirst || !joinsMaterials_)
        meshes.push_back({b});
      else
        meshes[mesh->second].push_back(b);
    }
    return meshes;
  }

  void AddNode(const std::string& name, std::vector<std::unique_ptr<aiMesh>> meshes) {
    auto& node = nodes_.emplace_back(std::make_unique<aiNode>(name));
    node->mNumMeshes = static_cast<unsigned>(meshes.size());
    node->mMeshes = new unsigned[meshes.size()];
    for (std::size_t i = 0; i < meshes.size(); ++i) {
      // With one name for all, the library would try all identifiers made of it for each mesh.
      const bool isWritten = i == 0 || !format_.joinsMeshes;
      meshes[i]->mName = aiString(isWritten ? name : fmt::format("{} {}", name, i));
      node->mMeshes[i] = static_cast<unsigned>(meshes_.size());
      meshes_.push_back(std::move(meshes[i]));
    }
  }

  unsigned IndexOfNoMaterial() {
    if (materials_.size() == model_.materials.size()) materials_.push_back(NoMaterial());
    return static_cast<unsigned>(model_.materials.size());
  }

  const ModelFile& model_;
  const TargetFormat& format_;
  const TargetSpace& space_;
  Changes& changes_;
  bool joinsMaterials_ = false;  ///< a mesh is all batches of a material, else one batch
  std::vector<aiColor4D> baseColours_;
  std::vector<std::unique_ptr<aiMaterial>> materials_;
  std::vector<std::unique_ptr<aiMesh>> meshes_;
  std::vector<std::unique_ptr<aiNode>> nodes_;
};

}  // namespace

std::unique_ptr<aiScene> TargetScene(const ModelFile& model, const std::string& name,
                                     const TargetFormat& format, const TargetSpace& space,
                                     Changes& changes) {
  return SceneBuilder(model, format, space, changes).Build(name);
}

}  // namespace mapexport
