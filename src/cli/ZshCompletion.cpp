#include <string_view>

#include <fmt/format.h>

#include "cli/CompletionParts.h"
#include "cli/Pages.h"

namespace mapexport {
namespace {

/// `text` as a part of a word between single quotes, where zsh reads `special` as its own.
std::string ZshText(std::string_view text, std::string_view special) {
  std::string quoted;
  for (const char c : WithBackslashes(text, special)) {
    if (c == '\'') {
      quoted += R"('\'')";
    } else {
      quoted += c;
    }
  }
  return quoted;
}

std::string ZshValue(const OptionInfo& option) {
  if (option.argument == nullptr) return {};
  std::string begin = fmt::format(":{}:", option.argument);
  if (ValueIsPath(option)) return begin + "_files";
  if (ValueWords(option).empty()) return begin;
  return fmt::format("{}({})", begin, fmt::join(ValueWords(option), " "));
}

/// An argument of _arguments, on a line of its own.
void AppendZshOption(std::string& script, const OptionInfo& option) {
  const std::string help = ZshText(ShortHelp(option.help), "[]\\:");
  const auto add = [&](std::string_view name, std::string_view note) {
    script += fmt::format(" \\\n          '*{}{}[{}{}]{}'", name,
                          option.argument == nullptr ? "" : "=", note, help, ZshValue(option));
  };
  if (option.letter != '\0') add(fmt::format("-{}", option.letter), "");
  add(fmt::format("--{}", option.name), "");
  if (option.kind == OptionKind::kSwitch) add(fmt::format("--no-{}", option.name), "not ");
}

constexpr std::string_view kZshBegin = R"(#compdef mapexport

_mapexport() {
  local context state state_descr line
  local -A opt_args
  local -a commands=(
)";

constexpr std::string_view kZshCommands = R"(  )
  _arguments -C)";

constexpr std::string_view kZshCase = R"( \
          '1:command:->command' '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $words[1] in
        help) _describe command commands ;;
)";

constexpr std::string_view kZshEnd = R"(      esac
      ;;
  esac
}

_mapexport "$@"
)";

}  // namespace

std::string ZshCompletion(std::span<const CommandInfo> commands) {
  std::string script(kZshBegin);
  for (const CommandInfo& command : commands) {
    script +=
        fmt::format("    '{}:{}'\n", command.name, ZshText(ShortHelp(command.summary), "\\:"));
  }
  script += kZshCommands;
  for (const OptionInfo& option : kProgramOptions) AppendZshOption(script, option);
  script += kZshCase;
  for (const CommandInfo& command : commands) {
    if (std::string_view(command.name) == "help") continue;
    script += fmt::format("        {}) _arguments", command.name);
    for (const OptionInfo& option : command.options) AppendZshOption(script, option);
    AppendZshOption(script, kHelpOption);
    script += " \\\n          '*:file:_files' ;;\n";
  }
  script += kZshEnd;
  return script;
}

}  // namespace mapexport
