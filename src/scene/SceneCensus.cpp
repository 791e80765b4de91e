#include "scene/SceneCensus.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include <fmt/format.h>

#include "system/Ascii.h"
#include "system/PrintableText.h"

namespace mapexport {
namespace {

constexpr std::size_t kNamedNodes = 5;
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

/// The nodes below `node`.
std::uint64_t NodesBelow(const SceneNode& node) {
  std::uint64_t count = node.children.size();
  for (const SceneNode& child : node.children) count += NodesBelow(child);
  return count;
}

void Count(const SceneNode& node, SceneCensus& census, Box& box) {
  if (node.object == SceneObject::kMesh) {
    if (node.mesh == nullptr || node.mesh->faces.empty()) {
      census.unreached += NodesBelow(node);
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
      census.excluded += 1 + NodesBelow(child);
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

std::string LargestNodes(const SceneCensus& census, std::uint64_t NodeCensus::*count) {
  std::vector<const NodeCensus*> nodes;
  for (const NodeCensus& node : census.nodes) {
    if (node.*count > 0) nodes.push_back(&node);
  }
  std::ranges::stable_sort(nodes, std::ranges::greater(),
                           [count](const NodeCensus* node) { return node->*count; });
  nodes.resize(std::min(nodes.size(), kNamedNodes));
  std::string text;
  for (const NodeCensus* node : nodes) {
    text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", Quoted(node->name), node->*count);
  }
  return text;
}

}  // namespace mapexport
