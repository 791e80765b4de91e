// Shape keys and bones of an FBX file.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace mapexport {

class FbxModels;
struct FoldedNode;
struct LibraryPart;

/// Puts vertices where the file shows them: shape keys at their values, then bones where their
/// nodes are.
class FbxDeform {
 public:
  /// Both must outlive this object. `nodes` are those that `models` was made of.
  FbxDeform(const FbxModels& models, const std::vector<FoldedNode>& nodes)
      : models_(models), nodes_(nodes) {}

  /// Moves `parts`, the whole mesh of the node with that index, as the node shows it. Normals, if
  /// there are any, become those of the moved faces, smooth where they were. A mesh whose bones are
  /// where it was bound keeps its positions and normals bit for bit. False when bones move the mesh
  /// and one of them can't be told or has no usable place: then none moves it.
  bool Apply(std::span<LibraryPart> parts, std::size_t node) const;

 private:
  void Morph(std::span<LibraryPart> parts, std::size_t node) const;
  bool Pose(std::span<LibraryPart> parts, std::size_t node) const;

  const FbxModels& models_;
  const std::vector<FoldedNode>& nodes_;
};

}  // namespace mapexport
