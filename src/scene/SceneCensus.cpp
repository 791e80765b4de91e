#include "scene/SceneCensus.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "system/Ascii.h"

namespace mapexport {
namespace {

constexpr std::size_t kMostLargest = 100;
constexpr std::string_view kExclude = "exclude";

class Box {
 public:
  void Add(const Point3& p) {
    low_ = {std::min(low_.x, p.x), std::min(low_.y, p.y), std::min(low_.z, p.z)};
    high_ = {std::max(high_.x, p.x), std::max(high_.y, p.y), std::max(high_.z, p.z)};
  }
  float LongestEdge() const {
    return std::max({0.0f, high_.x - low_.x, high_.y - low_.y, high_.z - low_.z});
  }

 private:
  static constexpr float kInfinity = std::numeric_limits<float>::infinity();
  Point3 low_{kInfinity, kInfinity, kInfinity};
  Point3 high_{-kInfinity, -kInfinity, -kInfinity};
};

/// Adds the names of the nodes below `node`.
void AddBelow(const SceneNode& node, std::vector<std::string>& names) {
  for (const SceneNode& child : node.children) {
    names.push_back(child.name);
    AddBelow(child, names);
  }
}

void Count(const SceneNode& node, SceneCensus& census, Box& box) {
  if (node.object == SceneObject::kMesh) {
    if (node.mesh == nullptr || node.mesh->faces.empty()) {
      AddBelow(node, census.unreached);
      return;
    }
    const Mesh& mesh = *node.mesh;
    census.nodes.push_back({node.name, mesh.verts.size(), mesh.faces.size()});
    census.vertices += mesh.verts.size();
    census.triangles += mesh.faces.size();
    for (const Point3& vertex : mesh.verts) box.Add(vertex * node.objectTransform);
  }
  for (const SceneNode& child : node.children) {
    if (StartsWithAnyCase(child.name, kExclude)) {
      census.excluded.push_back(child.name);
      AddBelow(child, census.excluded);
    } else {
      Count(child, census, box);
    }
  }
}

}  // namespace

SceneCensus CountScene(const Scene& scene) {
  SceneCensus census;
  census.materials = scene.materials.size();
  Box box;
  Count(scene.root, census, box);
  census.extent = box.LongestEdge();
  return census;
}

std::vector<const NodeCensus*> LargestNodes(const SceneCensus& census,
                                            std::uint64_t NodeCensus::*count) {
  std::vector<const NodeCensus*> nodes;
  for (const NodeCensus& node : census.nodes) {
    if (node.*count > 0) nodes.push_back(&node);
  }
  std::ranges::stable_sort(nodes, std::ranges::greater(),
                           [count](const NodeCensus* node) { return node->*count; });
  nodes.resize(std::min(nodes.size(), kMostLargest));
  return nodes;
}

}  // namespace mapexport
