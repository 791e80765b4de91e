// The command `scene`.
#pragma once

#include "cli/Arguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Writes a scene as a scene file. Throws SceneError and RunError.
ExitStatus RunSceneCommand(const SceneArguments& arguments);

}  // namespace mapexport
