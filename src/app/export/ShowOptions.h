// The output of `export --show-options`.
#pragma once

#include <map>
#include <string>

#include "app/Messages.h"
#include "app/export/ExportArguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Where the options of an export come from, by their names; those of the command line are not
/// listed.
using OptionOrigins = std::map<std::string, std::string, std::less<>>;

/// Prints each option that shapes the output with its value and where that comes from. The values
/// of the dialog are those that the exporter itself shows, which exports nothing meanwhile. Throws
/// RunError.
ExitStatus ShowOptions(const ExportArguments& arguments, const OptionOrigins& origins,
                       Messages& messages);

}  // namespace mapexport
