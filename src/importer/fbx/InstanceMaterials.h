// The materials of FBX nodes that share a mesh.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "importer/ImportOptions.h"
#include "importer/fbx/FbxLinks.h"
#include "importer/rebuild/ImportMaterials.h"

namespace mapexport {

class MaterialTable;
struct FoldedNode;
struct LibraryScene;
struct MeshInstance;

/// The library gives all nodes that share a mesh the materials of the first one, and forgets
/// materials that only the others have. The connections in the file say what each node has; the
/// forgotten materials are found by having the library read the file again, with another node as
/// the only one that shows the mesh.
class InstanceMaterials {
 public:
  /// Reads the file of `source` again. `hostMaterials` gives the host's material by the library's.
  /// All must outlive this object.
  InstanceMaterials(const LibraryScene& source, const std::vector<FoldedNode>& nodes,
                    const std::vector<int>& hostMaterials);

  /// Adds the materials to `materials` that nodes of `instances` have and the library forgot. Reads
  /// the file at most kMostReadings times for it; what is still unknown then stays so.
  void LearnForgotten(const std::vector<MeshInstance>& instances, const ImportOptions& options,
                      MaterialTable& materials);

  /// The host materials that replace instance.parts for instance.node, -1 for none. Empty when they
  /// are not certain: the file can't be read, its models aren't the scene's nodes, or the names of
  /// the materials aren't unique.
  std::optional<std::vector<int>> PartsOf(const MeshInstance& instance) const;

 private:
  static constexpr int kMostReadings = 16;
  using Ids = std::vector<std::int64_t>;

  void MatchNodes(const std::vector<FoldedNode>& nodes);
  void FindUniqueNames();
  std::unordered_map<std::int64_t, std::int64_t> ChooseModels(
      const std::vector<MeshInstance>& instances);
  std::vector<SceneMaterial> MaterialsOf(const std::string& text,
                                         const ImportOptions& options) const;
  std::optional<int> PartOf(int part, const Ids& first, const Ids& own) const;
  std::string HostName(const std::string& name) const;

  const LibraryScene& source_;
  std::string text_;  // of the file
  FbxLinks file_;
  std::vector<std::int64_t> modelOf_;                   // ids by node; empty when in doubt
  std::vector<Ids> materialsOf_;                        // ids by node
  std::unordered_map<std::int64_t, Ids> geometriesOf_;  // by model
  std::unordered_map<std::string, std::optional<std::int64_t>> idByName_;  // of materials
  std::unordered_map<std::int64_t, int> hostOf_;  // by the ids whose names are unique
  std::vector<bool> isTried_;                     // by node
};

}  // namespace mapexport
