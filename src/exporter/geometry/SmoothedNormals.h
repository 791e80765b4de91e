// Corner normals from smoothing groups.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/geometry/GroupFace.h"

namespace mapexport {

/// The corner normals of the faces of one node. A corner of a face with smoothing groups starts
/// from the face's normal, adds the normals of the node's other faces that share a smoothing group
/// and the vertex, in face order, and is normalised; a face without smoothing groups is flat.
/// Literal form: CornerNormal in tests/reference/LiteralGeometry.h.
class SmoothedNormals {
 public:
  /// `faces` are the node's faces in the order of their surface set. They use the `vertexCount`
  /// vertices of the group from `firstVertex` on. The faces must outlive this.
  SmoothedNormals(std::span<const GroupFace> faces, std::uint32_t firstVertex,
                  std::size_t vertexCount);

  /// The three corner normals of `faces[f]`.
  std::array<Point3, 3> OfFace(std::size_t f) const;

 private:
  /// What the sums need of a face.
  struct Facing {
    Point3 normal;
    std::uint32_t smoothing;
  };

  Point3 OfCorner(std::size_t f, std::uint32_t v) const;

  std::span<const GroupFace> faces_;
  std::uint32_t firstVertex_;
  // These are empty when all faces are flat.
  std::vector<Facing> facings_;        ///< per face
  std::vector<std::uint32_t> starts_;  ///< where each vertex's faces begin in users_
  std::vector<std::uint32_t> users_;   ///< indices into faces_, ascending per vertex
};

}  // namespace mapexport
