// Loads a scene of any format.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/Stages.h"
#include "cli/SharedOptions.h"
#include "scene/Scene.h"
#include "system/Remark.h"
#include "worker/ConfineReader.h"

namespace mapexport {

struct LoadedScene {
  Scene scene;
  Remarks leftOut;                         ///< what of a foreign scene is left out, by kind
  std::vector<std::string> sideFiles;      ///< read beside it, as paths that can be opened
  std::optional<Confinement> confinement;  ///< of the process that read a foreign scene
};

/// The scene file or foreign scene of `source`; what is remarkable is told. Begins a stage of
/// reading before anything else may have begun one. Throws SceneError.
LoadedScene LoadScene(const SceneSource& source, Messages& messages, Stages& stages);

}  // namespace mapexport
