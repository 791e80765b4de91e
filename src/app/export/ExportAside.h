// Exports a scene for a command that wants the model, not a file.
#pragma once

#include <functional>
#include <string>

#include "app/export/RunReport.h"
#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "output/OutputTarget.h"

namespace mapexport {

/// Gets the checked model file and what is known of its export.
using UseAside = std::function<void(const std::string& file, const RunReport& report)>;

/// Exports the scene that is the only positional of `line`, a line of the command `export`, with
/// the options, mapexport.toml and settings with which `export` would, in the second layout, to a
/// file in the system's temporary folder, which is there for `use` only. Prints the same warnings;
/// saves no settings and writes no log. Refuses to read `taken`, which the caller will replace.
/// Returns the status of an export that succeeds; throws RunError and UsageError.
ExitStatus ExportAside(CommandLine line, const OutputTarget& taken, const UseAside& use);

}  // namespace mapexport
