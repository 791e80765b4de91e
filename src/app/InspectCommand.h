// The command `inspect`.
#pragma once

#include "cli/Arguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Checks a model file and prints what it holds; what is wrong with it goes to standard error.
/// Throws RunError when standard output can't be written.
ExitStatus RunInspectCommand(const InspectArguments& arguments);

}  // namespace mapexport
