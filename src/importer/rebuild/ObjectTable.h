// Objects of foreign nodes, each made once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

struct LeftOut;
struct LibraryScene;
class FbxDeform;
class MaterialTable;

/// What a node shows.
struct NodeObject {
  SceneObject object = SceneObject::kNone;
  std::shared_ptr<const Mesh> mesh;
  int material = -1;
};

/// A node that shows a mesh which an earlier node shows too.
struct MeshInstance {
  std::size_t node = 0;
  std::size_t firstNode = 0;
  std::vector<int> parts;  ///< materials of the mesh's material ids, as the library has them
};

/// Makes the objects of nodes; nodes with the same meshes share one.
class ObjectTable {
 public:
  /// All must outlive the table. `hostMaterials` gives the index in `materials` by the library's.
  /// `fbxDeform` is null for other formats.
  ObjectTable(const LibraryScene& source, const std::vector<int>& hostMaterials,
              const FbxDeform* fbxDeform, MaterialTable& materials, LeftOut& leftOut);

  /// The object of a node with these meshes (indices of the library's). Without meshes there is
  /// none; when their triangles are all left out it is a helper, since an empty mesh would hide the
  /// node's children from exporters. `node` is the number of the node; a new Multi/Sub-Object
  /// material is named `nodeName`.
  NodeObject Find(std::span<const unsigned> meshes, std::size_t node, const std::string& nodeName);

  const std::vector<MeshInstance>& Instances() const { return instances_; }

 private:
  // The order of GCC 12's vectors compares the first bytes alone on big-endian machines.
  struct Before {
    bool operator()(const std::vector<unsigned>& a, const std::vector<unsigned>& b) const {
      return std::ranges::lexicographical_compare(a, b);
    }
  };
  struct Entry {
    NodeObject object;
    std::size_t firstNode = 0;
    std::vector<int> parts;
  };

  Entry Make(std::span<const unsigned> meshes, std::size_t node, const std::string& nodeName);

  const LibraryScene& source_;
  const std::vector<int>& hostMaterials_;
  const FbxDeform* fbxDeform_;
  MaterialTable& materials_;
  LeftOut& leftOut_;
  std::vector<std::vector<bool>> flatFaces_;  // by the library's mesh
  std::vector<MeshInstance> instances_;
  std::map<std::vector<unsigned>, Entry, Before> objects_;
};

}  // namespace mapexport
