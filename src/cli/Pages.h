// Files that are installed with the program: its manual page, and completions for shells. Like
// --help, they are made from the table of commands.
#pragma once

#include <span>
#include <string>

#include "cli/CommandInfo.h"

namespace mapexport {

/// mapexport(1) in the man macros of troff. The same on every day and machine.
std::string ManPage(std::span<const CommandInfo> commands);

/// A script for bash that completes commands, options, the words that options take, and file names.
std::string BashCompletion(std::span<const CommandInfo> commands);
/// The same for fish and zsh, which show a note beside each word.
std::string FishCompletion(std::span<const CommandInfo> commands);
std::string ZshCompletion(std::span<const CommandInfo> commands);

}  // namespace mapexport
