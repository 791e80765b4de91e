// Loads a scene of any format.
#pragma once

#include <string>

#include "app/Messages.h"
#include "scene/Scene.h"

namespace mapexport {

/// The scene file or foreign scene at `path`; what the importer warns of is printed. Throws
/// SceneError.
Scene LoadScene(const std::string& path, const Messages& messages);

}  // namespace mapexport
