// The library's node tree as the artist made it.
#pragma once

#include <string>
#include <vector>

#include "importer/rebuild/AffineMatrix.h"

struct aiNode;

namespace mapexport {

struct LeftOut;
struct LibraryScene;

/// A node of the artist's.
struct FoldedNode {
  const aiNode* node = nullptr;
  int parent = -1;  ///< its index, always a lower one; -1: directly below the scene's root
  std::string name;
  AffineMatrix world;  ///< object to the library's world; finite, no number larger than 1e30
  /// The last part of `world`, which FBX files give to a node's geometry but not to its children.
  AffineMatrix geometric;
};

/// The nodes of `source` in pre-order, children in the file's order, without
///  - helper nodes that the FBX reader makes of a node's pivots and offsets (their transforms go
///    into the nodes below them, their children hang on the real node above),
///  - the root that a reader adds where the file has none, and nameless bare nodes directly below
///    it.
/// A transform that isn't finite or too large is replaced by the parent's and counted. Throws
/// SceneError when the nodes, with a root above them all, would be nested deeper than
/// kMaxSceneDepth.
std::vector<FoldedNode> FoldHelperNodes(const LibraryScene& source, LeftOut& leftOut);

}  // namespace mapexport
