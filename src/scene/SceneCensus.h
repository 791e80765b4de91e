// Counts what is exported of a scene, before anything is merged.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// A node with a mesh. Each instance counts separately, as it is exported.
struct NodeCensus {
  std::string name;
  std::uint64_t vertices = 0;
  std::uint64_t triangles = 0;
};

struct SceneCensus {
  std::vector<NodeCensus> nodes;  ///< in the order of the export
  std::uint64_t vertices = 0;
  std::uint64_t triangles = 0;
  std::uint64_t materials = 0;         ///< all of the scene, used or not
  std::vector<std::string> excluded;   ///< nodes named "exclude...", and all below them
  std::vector<std::string> unreached;  ///< nodes below a mesh object without a triangle
  float extent = 0;  ///< the longest edge of the box around all vertices, in the world
};

/// Walks the scene as the exporter does: a node named "exclude..." and everything below it, and
/// what is below a mesh object without a triangle, is not exported and
/// counts only as such.
SceneCensus CountScene(const Scene& scene);

/// The hundred nodes with the largest `count`, largest first. Nodes with 0 are left out.
std::vector<const NodeCensus*> LargestNodes(const SceneCensus& census,
                                            std::uint64_t NodeCensus::*count);

}  // namespace mapexport
