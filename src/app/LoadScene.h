// Loads a scene of any format.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/Stages.h"
#include "cli/SharedOptions.h"
#include "output/TakenFiles.h"
#include "scene/Scene.h"
#include "system/Remark.h"
#include "worker/ConfineReader.h"

namespace mapexport {

struct LoadedScene {
  Scene scene;
  Remarks leftOut;                         ///< how much of the scene is left out, by kind
  std::vector<std::string> sideFiles;      ///< other files that were read, as paths to open
  std::optional<Confinement> confinement;  ///< for a foreign scene
};

/// Adds the files that the command line names for `source`.
void AddNamedInputs(const SceneSource& source, TakenFiles& inputs);

/// Loads the scene file or foreign scene of `source` and prints its warnings and notes. Begins the
/// stage of reading, which must be the first stage of the run. Throws SceneError.
LoadedScene LoadScene(const SceneSource& source, Messages& messages, Stages& stages);

/// Warns when the process that read the file at `path` was not wholly confined.
void WarnOfConfinement(const Confinement& confinement, const std::string& path, Messages& messages);

}  // namespace mapexport
