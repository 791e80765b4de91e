// Gathers one node's render mesh.
#pragma once

#include <cstdint>

#include "exporter/base/TextureNames.h"
#include "exporter/geometry/GroupList.h"
#include "exporter/materials/MaterialsList.h"
#include "host/INode.h"

namespace mapexport {

/// What an export gathers by, and the materials that it adds to.
struct GatherContext {
  TimeValue time;                      ///< nodes, meshes and materials are evaluated at this time
  std::int32_t coordinateSystem;       ///< of ConvertPoint
  std::int32_t textureCoordinateMode;  ///< of ConvertTextureCoordinates
  const TextureNames& transparentTextures;
  MaterialsList& materials;
};

/// Appends the mesh's vertices, converted to export coordinates, one face per host triangle and the
/// attributes of its corners. Triangles without area are left out and reported to the debug log.
/// The faces join the surface set of the static subtree while one is gathered, else that of the
/// node's face flags. Linear in the mesh, except that k faces smoothed around one vertex cost k * k
/// additions: each sum starts from its own face's normal.
void GatherMesh(GroupList& groupList, GeometryGroup& group, INode& node, const Mesh& mesh,
                const GatherContext& context);

}  // namespace mapexport
