// Levels as OBJ files.
#pragma once

#include <ostream>
#include <string>

#include "scene/Scene.h"

namespace mapexport {

/// Writes the scene with smoothing groups, without normals, y up. Its nodes must be meshes right
/// below the root. `materialFile` is the name of what WriteMtl writes.
void WriteObj(const Scene& scene, const std::string& materialFile, std::ostream& out);

void WriteMtl(const Scene& scene, std::ostream& out);

}  // namespace mapexport
