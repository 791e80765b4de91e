// Imports foreign scene formats (FBX, glTF, OBJ, 3DS, ...) into the host's scene.
#pragma once

#include <string>
#include <vector>

#include "importer/ImportOptions.h"
#include "scene/Scene.h"
#include "system/Remark.h"

namespace mapexport {

struct ImportedScene {
  Scene scene;
  Remarks remarks;  ///< at most kMostRemarks
  Remarks leftOut;  ///< what the remark "left-out" sums up, one of each kind
  /// Files read beside the scene (.mtl, .bin, ...), as paths that can be opened from the current
  /// folder, each once, in the order of reading.
  std::vector<std::string> sideFiles;
};

/// Reads the file at `path`, in any known format, into the host's z-up world. The result is a valid
/// scene: UTF-8 names (here without control characters), finite numbers, indices in range, at most
/// kMaxSceneDepth levels, the root named "Scene Root". Nodes that show the same mesh share it. The
/// same file gives the same scene on every run. Throws SceneError only. Changes no process-wide
/// state, so a child process may do the reading.
ImportedScene ImportScene(const std::string& path, const ImportOptions& options);

}  // namespace mapexport
