// The options that a scene gets from the mapexport.toml beside it.
#pragma once

#include <optional>
#include <string>

#include "app/export/ExportArguments.h"
#include "app/export/ShowOptions.h"
#include "cli/CommandLine.h"

namespace mapexport {

/// Adds the options of a mapexport.toml that `line` does not give, and says where they come from.
/// Returns the path of that file; nothing when there is none, or with --fresh. Throws as
/// ReadOptionsFile.
std::optional<std::string> AddFileOptions(CommandLine& line, OptionOrigins& origins);

/// The arguments of a scene, perhaps one of several, with the options that its mapexport.toml has
/// now; `shared` are those without it. Throws as ReadOptionsFile and ReadExportArguments.
ExportArguments OwnArguments(CommandLine line, const ExportArguments& shared);

}  // namespace mapexport
