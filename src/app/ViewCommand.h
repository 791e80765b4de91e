// The command `view`.
#pragma once

#include "cli/Arguments.h"
#include "cli/ExitStatus.h"

namespace mapexport {

/// Writes an HTML page that shows a model file; what is wrong with the file goes to standard error.
/// Throws RunError when this program can't make pages or the page can't be written.
ExitStatus RunViewCommand(const ViewArguments& arguments);

}  // namespace mapexport
