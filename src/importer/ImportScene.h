// Foreign scene formats (FBX, glTF, OBJ, 3DS, ...) into the host's scene.
#pragma once

#include <string>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

struct ImportedScene {
  Scene scene;
  std::vector<std::string> warnings;  ///< one line each, without a "warning" prefix
};

/// Reads the file at `path`, whatever format it is in, into the host's z-up world; lengths given in
/// metres become centimetres. The result keeps what every scene promises: valid UTF-8 names, finite
/// numbers, indices in range, at most kMaxSceneDepth levels, the root named "Scene Root". Nodes
/// that show the same mesh share it. The same file gives the same scene on every run. Throws
/// SceneError and nothing else. The process-wide state is left alone, so that a child process may
/// do the reading.
ImportedScene ImportScene(const std::string& path);

}  // namespace mapexport
