// The table of commands. A command NAME is the file NameCommand.cpp: its options, what it makes of
// their values, and what it does.
#pragma once

#include <array>
#include <span>

#include "cli/CommandInfo.h"

namespace mapexport {

CommandInfo ExportCommand();
CommandInfo SceneCommand();
CommandInfo InspectCommand();
CommandInfo DiffCommand();
CommandInfo ConvertCommand();
CommandInfo ViewCommand();
CommandInfo PictureCommand();
CommandInfo FormatsCommand();
CommandInfo HelpCommand();

/// Every command, in the order in which they are listed.
inline std::span<const CommandInfo> Commands() {
  static const std::array commands{ExportCommand(),  SceneCommand(),   InspectCommand(),
                                   DiffCommand(),    ConvertCommand(), ViewCommand(),
                                   PictureCommand(), FormatsCommand(), HelpCommand()};
  return commands;
}

}  // namespace mapexport
