// Shape keys and bones of an FBX file.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/Point3.h"

struct aiMesh;

namespace mapexport {

class FbxModels;
struct FoldedNode;

/// Puts vertices where the file shows them: shape keys at their values, then bones where their
/// nodes are.
class FbxDeform {
 public:
  /// Both must outlive this object. `nodes` are those that `models` was made of.
  FbxDeform(const FbxModels& models, const std::vector<FoldedNode>& nodes);

  /// Moves `positions`, those of `mesh`, as the node with that index shows it. Normals, if there
  /// are any, become those of the moved faces, smooth where they were. A mesh whose bones are where
  /// it was bound keeps its positions and normals bit for bit.
  void Apply(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions,
             std::vector<Point3>& normals) const;

 private:
  void Morph(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions) const;
  void Pose(const aiMesh& mesh, std::size_t node, std::vector<Point3>& positions) const;

  const FbxModels& models_;
  const std::vector<FoldedNode>& nodes_;
  std::unordered_map<std::string_view, std::size_t> nodeOf_;  // by the library's name
};

}  // namespace mapexport
