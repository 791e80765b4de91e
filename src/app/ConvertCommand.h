// The command `convert`.
#pragma once

#include "app/Arguments.h"
#include "app/ExitStatus.h"

namespace mapexport {

/// Converts a model file to another format. Throws RunError.
ExitStatus RunConvertCommand(const ConvertArguments& arguments);

}  // namespace mapexport
