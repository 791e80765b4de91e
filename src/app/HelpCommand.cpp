// The command `help`.
#include <array>
#include <ostream>

#include "app/Commands.h"
#include "cli/CommandLine.h"
#include "cli/Help.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{
    PositionalInfo{
        .name = "COMMAND", .help = "the command that the help is about", .isOptional = true},
};

/// Prints what --help prints.
ExitStatus Run(const CommandLine& line) {
  const std::string text = line.positionals.empty()
                               ? ProgramHelp(Commands())
                               : CommandHelp(RequireCommand(Commands(), line.positionals[0]));
  const bool arrived = PrintResult([&](std::ostream& out) { out << text; });
  return arrived ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

CommandInfo HelpCommand() {
  return {.name = "help",
          .summary = "prints this help, or that of a command",
          .positionals = kPositionals,
          .run = Run};
}

}  // namespace mapexport
