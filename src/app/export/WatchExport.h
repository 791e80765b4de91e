// Exports a scene again and again, whenever a file that the output depends on changes.
#pragma once

#include "app/export/ExportArguments.h"
#include "app/export/ExportInChild.h"
#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Exports by `exportOne`, each time in a child process and from the settings as they are now, and
/// again after each change, until a signal ends the program; the status is then that of the signal.
/// With --view it also serves the page of the last good output and prints the address. An export
/// that fails is reported; the older output stays. Throws UsageError when `line` has options that
/// exclude this, and RunError.
ExitStatus WatchExport(const CommandLine& line, const ExportArguments& arguments,
                       const ExportOne& exportOne);

}  // namespace mapexport
