// The command `export`.
#pragma once

#include "cli/Arguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Exports a scene as a person does it with the options dialog, or lets one do it. The output is
/// checked before it takes its place; when anything fails, what was there before stays as it was.
/// Throws SceneError and RunError.
ExitStatus RunExportCommand(const ExportArguments& arguments);

}  // namespace mapexport
