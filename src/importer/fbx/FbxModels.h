// The models of an FBX file behind the nodes of the library's scene.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "importer/fbx/FbxLinks.h"
#include "importer/text/UserText.h"
#include "scene/FileText.h"

namespace mapexport {

struct FoldedNode;
struct LibraryScene;

/// What an FBX file says about nodes and the library doesn't hand over.
class FbxModels {
 public:
  using Ids = std::vector<std::int64_t>;

  /// Reads the file of `source` again. `source` must outlive this object.
  FbxModels(const LibraryScene& source, const std::vector<FoldedNode>& nodes);

  std::string_view FileView() const { return text_.View(); }
  /// Without any object when the file can't be read.
  const FbxLinks& File() const { return file_; }
  /// The name of an object as the host would have it.
  std::string HostName(const FbxObject& object) const;

  /// The model behind a node, by its index: the one at the same place in the tree with the same
  /// name. Null when there is none, or as many nodes as models don't share place and name.
  const FbxObject* ModelOf(std::size_t node) const { return modelOf_[node]; }
  /// What is connected to a model, by its id.
  const Ids& MaterialsOf(std::int64_t model) const { return Below(materialsOf_, model); }
  const Ids& GeometriesOf(std::int64_t model) const { return Below(geometriesOf_, model); }

  /// The values of the shape keys of a model's geometries, by the names that the library gives the
  /// shapes: their own, or in later versions "KEY.SHAPE", or "KEY" if that has a dot. 1 is the
  /// whole shape. Keys with several shapes are left out. Cost: the connections of the geometries.
  std::unordered_map<std::string, double> ShapeWeightsOf(const FbxObject& model) const;
  struct Bone {
    /// Empty when several bones have the name (the library makes them one), and for a bone without
    /// a node of its own.
    std::optional<std::size_t> node;
    std::optional<AffineMatrix> bind;  ///< FbxObject::bind, when it is one
  };
  /// The bones that move a model's geometries, by their names. Cost: the connections of the
  /// geometries.
  std::unordered_map<std::string_view, Bone> BonesOf(const FbxObject& model) const;
  /// The custom properties of a model and its geometries.
  UserText TextOf(const FbxObject& model) const;
  /// Whether the file hides each node: by its own property "Visibility" or its parent's. In
  /// Blender, a parent's doesn't matter.
  std::vector<bool> HiddenNodes(const std::vector<FoldedNode>& nodes) const;

 private:
  using IdsOf = std::unordered_map<std::int64_t, Ids>;

  /// Channels of shapes and clusters of skins, each once.
  Ids SubDeformersOf(const FbxObject& model) const;
  void FollowLinks();
  void MatchNodes(const std::vector<FoldedNode>& nodes);
  void AddProperties(const FbxObject& object, UserText& text) const;
  static const Ids& Below(const IdsOf& ids, std::int64_t parent);

  const LibraryScene& source_;
  FileText text_;
  FbxLinks file_;
  std::unordered_map<std::int64_t, const FbxObject*> objectOf_;  // by id
  IdsOf modelsBelow_;
  IdsOf materialsOf_;
  IdsOf geometriesOf_;
  IdsOf deformersOf_;
  std::vector<const FbxObject*> modelOf_;                                // by node
  std::unordered_map<std::int64_t, std::optional<std::size_t>> nodeOf_;  // empty: several nodes
};

}  // namespace mapexport
