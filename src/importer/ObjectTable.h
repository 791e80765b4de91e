// Objects and materials of foreign nodes, each made once.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

struct LeftOut;
struct LibraryScene;

/// What a node shows.
struct NodeObject {
  SceneObject object = SceneObject::kNone;
  std::shared_ptr<const Mesh> mesh;
  int material = -1;
};

/// Makes the objects of nodes; nodes with the same meshes share one. The scene's materials are in
/// place from the start; Multi/Sub-Object materials come behind them as nodes with several
/// materials need them.
class ObjectTable {
 public:
  /// Both must outlive the table.
  ObjectTable(const LibraryScene& source, LeftOut& leftOut);

  /// The object of a node with these meshes (indices of the library's). Without meshes there is
  /// none; when their triangles are all left out it is a helper, since an empty mesh would hide the
  /// node's children from exporters. A new Multi/Sub-Object material is named `nodeName`.
  NodeObject Find(std::span<const unsigned> meshes, const std::string& nodeName);

  std::size_t TriangleCount() const { return triangleCount_; }
  /// Nodes that show a mesh which an earlier node shows too.
  std::size_t InstanceCount() const { return instanceCount_; }
  std::vector<SceneMaterial> TakeMaterials() { return std::move(materials_); }

 private:
  NodeObject Make(std::span<const unsigned> meshes, const std::string& nodeName);
  int MaterialOfParts(const std::vector<int>& parts, const std::string& nodeName);

  const LibraryScene& source_;
  LeftOut& leftOut_;
  std::vector<SceneMaterial> materials_;
  std::vector<int> hostMaterials_;  // by the library's material index
  std::size_t triangleCount_ = 0;   // of the objects, not of the nodes
  std::size_t instanceCount_ = 0;
  std::map<std::vector<unsigned>, NodeObject> objects_;
  std::map<std::vector<int>, int> multiMaterials_;
};

}  // namespace mapexport
