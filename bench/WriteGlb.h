// Levels as binary glTF files.
#pragma once

#include <ostream>

#include "scene/Scene.h"

namespace mapexport {

/// Writes the scene with normals that break where its smoothing groups do, y up, in metres. All
/// nodes must be meshes directly below the root.
void WriteGlb(const Scene& scene, std::ostream& out);

}  // namespace mapexport
