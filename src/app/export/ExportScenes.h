// Exports several scenes, each in a process of its own.
#pragma once

#include "app/export/ExportArguments.h"
#include "app/export/ExportInChild.h"
#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Exports all jobs of `arguments`, which are those of `line`, by `exportOne`, prints what becomes
/// of each, and writes one report and one depfile. When a signal interrupts it, it ends by that
/// signal: what is done stays, the rest is as before. Throws RunError.
ExitStatus ExportScenes(const CommandLine& line, const ExportArguments& arguments,
                        const ExportOne& exportOne);

}  // namespace mapexport
