// The checks of a scene file's mesh that need more than one of its lists.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/Mesh.h"
#include "scene/JsonValue.h"

namespace mapexport {

/// A mesh as a scene file has it.
struct FileMesh {
  std::shared_ptr<const Mesh> mesh;
  std::size_t lostCreases = 0;  ///< of its corner normals (RebuildSmoothing)
};

/// Throws SceneError unless each index of `mesh`, which was read from `value`, refers to something
/// and each face has texture corners where there are texture vertices, and corner normals where
/// there are any. `hasTextureFaces` tells an empty list from none. Texture faces without texture
/// vertices are dropped. Corner normals replace the smoothing groups (RebuildSmoothing).
FileMesh FinishMesh(const JsonValue& value, Mesh mesh, bool hasTextureFaces,
                    std::span<const Point3> cornerNormals);

/// "8 vertices", "1 vertex", "no vertices".
std::string Count(std::size_t count, std::string_view one, std::string_view many);

}  // namespace mapexport
