// Descriptions of commands and their options. The parser, --help, the manual page and the
// completion are all made from a table of these.
#pragma once

#include <array>
#include <span>

#include "cli/ExitStatus.h"

namespace mapexport {

struct CommandLine;

enum class OptionKind {
  kFlag,    ///< "--name"
  kSwitch,  ///< "--name" or "--no-name"
  kNumber,  ///< "--name X", a decimal number in the range of a 32-bit float
  kRow,     ///< "--name ROW", a row of a list box by its number or its name
  kText     ///< "--name TEXT"
};

struct OptionInfo {
  const char* name;  ///< without dashes
  OptionKind kind;
  const char* argument = nullptr;  ///< name of the value in the help; null for flags and switches
  const char* help;
  char letter = '\0';  ///< short form, "-l"
  /// The control of the options dialog that the option operates; 0 for none.
  int control = 0;
  std::span<const char* const> rows = {};   ///< names of a kRow's rows
  std::span<const char* const> words = {};  ///< of a kText: words among its values, all or some
  /// Whether the output depends on the value. An option that operates a control shapes it anyway.
  bool shapesOutput = false;
  const char* defaultValue = nullptr;  ///< of a kText that has one
  bool repeats = false;                ///< every value counts, not only the last one
};

inline bool ShapesOutput(const OptionInfo& option) {
  return option.shapesOutput || option.control != 0;
}

struct PositionalInfo {
  const char* name;
  const char* help;
  bool isOptional = false;  ///< only of a command's last one
};

struct CommandInfo {
  const char* name;
  const char* summary;
  std::span<const PositionalInfo> positionals = {};
  /// Other arguments in place of the positionals, for the usage line. The command then gets any
  /// number of positionals, at least one, and checks it.
  const char* otherForm = nullptr;
  /// Options that operate controls come in the order of the dialog's control table.
  std::span<const OptionInfo> options = {};
  /// Runs the command. Throws UsageError for a wrong value, and other exceptions when it fails.
  ExitStatus (*run)(const CommandLine& line);
};

/// An option of the program and of every command.
inline constexpr OptionInfo kHelpOption{
    .name = "help", .kind = OptionKind::kFlag, .help = "print this help and end", .letter = 'h'};

/// Options of the program itself.
inline constexpr std::array kProgramOptions{
    kHelpOption,
    OptionInfo{.name = "version", .kind = OptionKind::kFlag, .help = "print the version and end"},
    OptionInfo{.name = "verbose",
               .kind = OptionKind::kFlag,
               .help = "print also what is built in, with --version"},
};

}  // namespace mapexport
