// OBJ files and their materials into the host's scene.
#pragma once

#include <string>

#include "importer/ImportOptions.h"

namespace mapexport {

struct ImportedScene;
struct LeftOut;

/// Whether the name of the file says that it is an OBJ file.
bool IsObjPath(const std::string& path);

/// Reads the OBJ file at `path` and the MTL files that it names into `result`: one node for each
/// object or group with faces, all directly below the scene's root. An MTL file is looked for
/// beside the scene under the name that is given, with either separator, then under its last
/// component alone. Materials that are in no MTL file are plain ones. Throws SceneError.
void ImportObj(const std::string& path, const ImportOptions& options, ImportedScene& result,
               LeftOut& leftOut);

}  // namespace mapexport
