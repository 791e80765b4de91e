// Parses a command line by the table of commands and options.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandInfo.h"

namespace mapexport {

/// Options by name with their values, at least one, in the order in which they are given; "on" or
/// "off" for a kSwitch, "" for a kFlag.
using GivenOptions = std::map<std::string, std::vector<std::string>, std::less<>>;

/// The parts of a command line; the meaning of values is not checked here.
struct CommandLine {
  const CommandInfo* command = nullptr;  ///< null: help or version without a command
  std::vector<std::string> positionals;  ///< those that are given
  GivenOptions options;

  enum class Wanted { kCommand, kHelp, kVersion };
  Wanted wanted = Wanted::kCommand;  ///< with kHelp, the help of `command` or of the program
  bool verbose = false;              ///< with kVersion

  bool Has(std::string_view option) const { return options.contains(option); }
  /// The last value; nothing for an option that is not given.
  std::optional<std::string> Value(std::string_view option) const;
  /// All values of an option that can be repeated.
  std::span<const std::string> Values(std::string_view option) const;
};

/// A wrong command line; what() is one line that says what is wrong.
class UsageError : public std::runtime_error {
 public:
  /// `usedCommand` is the command that was given; null for none.
  UsageError(const std::string& text, const CommandInfo* usedCommand)
      : std::runtime_error(text), command(usedCommand) {}

  const CommandInfo* command;  ///< the command whose usage line helps
};

/// The command of that name. Throws UsageError, which suggests one.
const CommandInfo& RequireCommand(std::span<const CommandInfo> commands, std::string_view name);

/// `arguments` are those after the program's name. Names can't be abbreviated; "--" ends the
/// options. A request for help precedes every error except malformed options. The result points
/// into `commands`. Throws UsageError.
CommandLine ParseCommandLine(std::span<const CommandInfo> commands,
                             const std::vector<std::string>& arguments);

}  // namespace mapexport
