// Usage and help texts, made from the table of commands and options.
#pragma once

#include <span>
#include <string>

#include "cli/CommandInfo.h"

namespace mapexport {

/// "usage: mapexport export SCENE OUTPUT [options]"; with null the program's own. No newline.
std::string UsageLine(const CommandInfo* command);

/// "SCENE", or "[COMMAND]" for one that is optional.
std::string PositionalHead(const PositionalInfo& positional);

/// The forms of an option: "-o, --output FILE", "--weld, --no-weld".
std::string OptionHead(const OptionInfo& option);
/// The meaning of an option, with the names of a list box's rows.
std::string OptionHelp(const OptionInfo& option);

/// The output of the program's --help.
std::string ProgramHelp(std::span<const CommandInfo> commands);
/// The output of a command's --help.
std::string CommandHelp(const CommandInfo& command);

/// The output of --version.
std::string VersionText();

}  // namespace mapexport
