// The materials of FBX nodes that share a mesh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "importer/ImportOptions.h"
#include "importer/fbx/FbxModels.h"
#include "importer/rebuild/ImportMaterials.h"

namespace mapexport {

class MaterialTable;
struct LibraryScene;
struct MeshInstance;

/// The library gives all nodes that share a mesh the materials of the first one, and forgets
/// materials that only the others have. The connections in the file say what each node has; the
/// forgotten materials are found by having the library read the file again, with another node as
/// the only one that shows the mesh.
class InstanceMaterials {
 public:
  /// `hostMaterials` gives the host's material by the library's. All must outlive this object.
  InstanceMaterials(const LibraryScene& source, const FbxModels& models,
                    const std::vector<int>& hostMaterials);

  /// Adds the materials to `materials` that nodes of `instances` have and the library forgot. Reads
  /// the file at most kMostReadings times for it; what is still unknown then stays so.
  void LearnForgotten(const std::vector<MeshInstance>& instances, const ImportOptions& options,
                      MaterialTable& materials);

  /// The host materials that replace instance.parts for instance.node, -1 for none. Empty when they
  /// are not certain: the models behind the nodes are in doubt, or the names of the materials
  /// aren't unique.
  std::optional<std::vector<int>> PartsOf(const MeshInstance& instance) const;

 private:
  static constexpr int kMostReadings = 16;
  using Ids = FbxModels::Ids;

  void FindUniqueNames();
  std::unordered_map<std::int64_t, std::int64_t> ChooseModels(
      const std::vector<MeshInstance>& instances);
  std::vector<SceneMaterial> MaterialsOf(const std::string& text,
                                         const ImportOptions& options) const;
  std::optional<int> PartOf(int part, const Ids& first, const Ids& own) const;

  const LibraryScene& source_;
  const FbxModels& models_;
  std::unordered_map<std::string, std::optional<std::int64_t>> idByName_;  // of materials
  std::unordered_map<std::int64_t, int> hostOf_;  // by the ids whose names are unique
  std::unordered_set<std::size_t> tried_;         // nodes
};

}  // namespace mapexport
