// Imports OBJ files and their materials into the host's scene.
#pragma once

#include <string>

#include "importer/ImportOptions.h"

namespace mapexport {

struct ImportedScene;
struct LeftOut;

/// Whether the path has the extension of OBJ files.
bool IsObjPath(const std::string& path);

/// Reads the OBJ file at `path` and the MTL files that it names into `result`: one node for each
/// object or group with faces, all directly below the scene's root. An MTL file is looked for
/// beside the scene by the given name, with either separator, then by its last component. Materials
/// that no MTL file defines are plain ones. Throws SceneError.
void ImportObj(const std::string& path, const ImportOptions& options, ImportedScene& result,
               LeftOut& leftOut);

}  // namespace mapexport
