// A wrong command line.
#pragma once

#include <stdexcept>
#include <string>

#include "cli/Options.h"

namespace mapexport {

/// what() is one line that says what is wrong.
class UsageError : public std::runtime_error {
 public:
  /// `usedCommand` is the command that was given, null when there was none.
  UsageError(const std::string& text, const CommandInfo* usedCommand)
      : std::runtime_error(text), command(usedCommand) {}

  const CommandInfo* command;  ///< whose usage line helps
};

}  // namespace mapexport
