// Completion of the command line for bash.
#pragma once

#include <string>

namespace mapexport {

/// A script for bash that completes commands, options, the words that options take, and file names;
/// made from the table of options that --help is made of.
std::string BashCompletion();

}  // namespace mapexport
