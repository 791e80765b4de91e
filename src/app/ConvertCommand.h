// The command `convert`.
#pragma once

#include "cli/Arguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Converts a model file to another format. Throws RunError.
ExitStatus RunConvertCommand(const ConvertArguments& arguments);

}  // namespace mapexport
