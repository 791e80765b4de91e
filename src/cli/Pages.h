// What is installed beside the program: its manual page, and completion for bash. Both are made
// from the table of commands that --help is made of.
#pragma once

#include <span>
#include <string>

#include "cli/CommandInfo.h"

namespace mapexport {

/// mapexport(1) in the man macros of troff. Nothing in it depends on the day or the machine.
std::string ManPage(std::span<const CommandInfo> commands);

/// A script for bash that completes commands, options, the words that options take, and file names.
std::string BashCompletion(std::span<const CommandInfo> commands);

}  // namespace mapexport
