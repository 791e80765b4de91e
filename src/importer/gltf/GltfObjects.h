// The meshes of glTF nodes, each made once.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "importer/gltf/GltfAccessors.h"
#include "importer/gltf/GltfBudget.h"
#include "importer/gltf/GltfBuffers.h"
#include "importer/gltf/GltfDocument.h"
#include "importer/rebuild/AffineMatrix.h"
#include "importer/rebuild/MeshBuilder.h"
#include "importer/rebuild/ObjectTable.h"

namespace mapexport {

/// Makes the objects of nodes. Nodes with the same mesh share one, unless they deform it in
/// different ways.
class GltfObjects {
 public:
  /// All must outlive this object. `materials` begins with those of the document, `worlds` are the
  /// world transforms of its nodes.
  GltfObjects(const std::string& path, const GltfDocument& document, GltfBuffers& buffers,
              GltfAccessors& accessors, GltfBudget& budget, const std::vector<AffineMatrix>& worlds,
              MaterialTable& materials, LeftOut& leftOut)
      : path_(path),
        document_(document),
        buffers_(buffers),
        accessors_(accessors),
        budget_(budget),
        worlds_(worlds),
        materials_(materials),
        leftOut_(leftOut) {}

  /// The object of a node, by its index; none without a mesh, a helper when no triangle is left.
  /// Morph targets have their default weights. With a skin the mesh is in world space. A new
  /// Multi/Sub-Object material is named `nodeName`. Throws SceneError, with the place in the
  /// document.
  NodeObject Find(int node, const std::string& nodeName);

 private:
  struct Deformation;

  /// `isTurned`: the triangles are turned over.
  RebuiltMesh Make(const GltfNode& node, bool isTurned);
  void AddPrimitive(const GltfPrimitive& primitive, const std::string& place,
                    const Deformation& deformation, MeshBuilder& builder);
  const std::vector<AffineMatrix>& JointMatrices(int skin);
  void ReadDraco(const GltfPrimitive& primitive, const std::string& place);
  std::vector<CornerIndices> Triangles(const GltfPrimitive& primitive, const std::string& place,
                                       std::size_t vertices);
  GltfPoints OfVertices(GltfPoints points, std::size_t vertices);
  GltfPoints TexturePoints(const GltfPrimitive& primitive, std::size_t vertices);
  std::vector<Point3> Morphed(const GltfPrimitive& primitive, const std::string& place,
                              std::string_view attribute, const std::vector<Point3>& points,
                              const Deformation& deformation);
  void Skin(const GltfPrimitive& primitive, const std::string& place,
            const Deformation& deformation, std::vector<Point3>& positions,
            std::vector<Point3>& normals);

  const std::string& path_;
  const GltfDocument& document_;
  GltfBuffers& buffers_;
  GltfAccessors& accessors_;
  GltfBudget& budget_;
  const std::vector<AffineMatrix>& worlds_;
  MaterialTable& materials_;
  LeftOut& leftOut_;
  /// By mesh, skin, whether it is turned, and weights.
  std::map<std::tuple<int, int, bool, std::vector<float>>, NodeObject> objects_;
  std::map<int, std::vector<AffineMatrix>> jointMatrices_;  // by skin
};

}  // namespace mapexport
