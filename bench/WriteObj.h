// Levels as OBJ files.
#pragma once

#include <ostream>
#include <string>

#include "scene/Scene.h"

namespace mapexport {

/// Writes the scene with smoothing groups, without normals, y up. All nodes must be meshes directly
/// below the root. `materialFile` is the name of the file that WriteMtl writes.
void WriteObj(const Scene& scene, const std::string& materialFile, std::ostream& out);

void WriteMtl(const Scene& scene, std::ostream& out);

}  // namespace mapexport
