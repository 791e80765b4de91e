// A host mesh from triangles as formats store them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/Mesh.h"
#include "importer/rebuild/MaterialParts.h"
#include "importer/rebuild/PointTable.h"
#include "scene/smoothing/RebuildSmoothing.h"

namespace mapexport {

struct LeftOut;

using CornerIndices = std::array<std::uint32_t, 3>;

/// Triangles with one material. Nothing in it is trusted: indices may be out of range, numbers not
/// finite.
struct MeshPart {
  std::span<const Point3> positions;
  std::span<const Point3> normals;             ///< as many as positions, or none
  std::span<const Point3> textureCoordinates;  ///< v up; as many as positions, or none
  std::span<const CornerIndices> triangles;    ///< indices into all three lists
  std::span<const std::uint8_t> isFlat;        ///< one for each triangle, or none
  int material = -1;                           ///< the host's index, -1 for none
};

struct RebuiltMesh {
  std::shared_ptr<const Mesh> mesh;  ///< null when no triangle is left
  /// By the material id of the mesh's faces: the host's index of the material, -1 for none. Each
  /// material once, in the order of the parts.
  std::vector<int> partMaterials;
};

/// Joins parts to one mesh, in the order of their adding. Positions that are equal bit for bit
/// become one vertex, texture coordinates one texture vertex; what no face uses is gone. Kept are
/// triangles whose corners exist and are finite, in the order of the part; what is left out is
/// counted. Texture coordinates that aren't finite, and those of parts without any, are (0, 0, 0).
/// With more materials than there are material ids, the faces of the last ones get the last id.
class MeshBuilder {
 public:
  /// `leftOut` must outlive this object.
  explicit MeshBuilder(LeftOut& leftOut) : leftOut_(leftOut) {}

  /// Takes time for the triangles of `part`, whatever the lists hold that they use a few vertices
  /// of.
  void Add(const MeshPart& part);
  /// The mesh, with smoothing groups rebuilt from the normals (RebuildSmoothing), in which flat
  /// triangles and those of parts without normals have no share.
  RebuiltMesh Finish();

 private:
  void AddDense(const MeshPart& part);
  void AddSparse(const MeshPart& part);
  void KeepSoundTriangles(const MeshPart& part);
  void AddVertices(const MeshPart& part);
  void AddTextureFaces(const MeshPart& part);

  LeftOut& leftOut_;
  Mesh mesh_;
  PointTable positions_;
  PointTable textureVertices_;
  std::vector<Point3> normals_;  ///< of each corner of each face
  bool hasNormals_ = false;
  bool hasTexture_ = false;
  MaterialParts materials_;

  // Of the part at hand: its sound triangles, the run of vertices that they use, and for each of
  // these the index in the mesh.
  std::vector<std::uint32_t> kept_;
  std::uint32_t lowest_ = 0;
  std::size_t span_ = 0;
  std::vector<std::uint32_t> indexOf_;
};

}  // namespace mapexport
