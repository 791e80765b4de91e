// The texts that tell how the program is used, made from the table of commands and options.
#pragma once

#include <span>
#include <string>

#include "cli/CommandInfo.h"

namespace mapexport {

/// "usage: mapexport export SCENE OUTPUT [options]"; with null the program's own. No newline.
std::string UsageLine(const CommandInfo* command);

/// How an option is written: "-o, --output FILE", "--weld, --no-weld".
std::string OptionHead(const OptionInfo& option);
/// What it means, with the names of a list box's rows.
std::string OptionHelp(const OptionInfo& option);

/// What the program's own --help prints.
std::string ProgramHelp(std::span<const CommandInfo> commands);
/// What a command's --help prints.
std::string CommandHelp(const CommandInfo& command);

/// What --version prints.
std::string VersionText();

}  // namespace mapexport
