#include <string_view>

#include <fmt/format.h>

#include "cli/CompletionParts.h"
#include "cli/Pages.h"

namespace mapexport {
namespace {

constexpr std::string_view kBegin = R"(# bash completion for mapexport

_mapexport() {
  local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]} words=
  COMPREPLY=()
  # bash cuts "--option=value" into three words.
  if [[ $current == = ]]; then
    current=
  elif [[ $option == = ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W ')";

constexpr std::string_view kValues = R"(' -- "$current")
    return
  fi
  case "$command $option" in
)";

constexpr std::string_view kOptions = R"(  esac
  if [[ -n $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    return
  fi
  case $command in
)";

constexpr std::string_view kEnd = R"(  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -F _mapexport mapexport
)";

void AppendNames(std::string& words, const OptionInfo& option) {
  words += fmt::format(" --{}", option.name);
  if (option.kind == OptionKind::kSwitch) words += fmt::format(" --no-{}", option.name);
  if (option.letter != '\0') words += fmt::format(" -{}", option.letter);
}

std::string NamesOf(std::span<const OptionInfo> options) {
  std::string words;
  for (const OptionInfo& option : options) AppendNames(words, option);
  return words.empty() ? words : words.substr(1);
}

/// The case for what follows `option`: its words, or nothing when the value can't be completed.
std::string ValueCase(const CommandInfo& command, const OptionInfo& option) {
  if (option.argument == nullptr || ValueIsPath(option)) return {};
  const std::string pattern = fmt::format("    '{} --{}')", command.name, option.name);
  if (ValueWords(option).empty()) return pattern + " return ;;\n";
  return fmt::format("{} words='{}' ;;\n", pattern, fmt::join(ValueWords(option), " "));
}

}  // namespace

std::string BashCompletion(std::span<const CommandInfo> commands) {
  std::string script(kBegin);
  std::string all;
  for (const CommandInfo& command : commands) all += fmt::format("{} ", command.name);
  script += all + NamesOf(kProgramOptions);
  script += kValues;
  script += fmt::format("    'help help') words='{}--help' ;;\n", all);
  for (const CommandInfo& command : commands) {
    for (const OptionInfo& option : command.options) script += ValueCase(command, option);
  }
  script += kOptions;
  for (const CommandInfo& command : commands) {
    std::string names = NamesOf(command.options);
    names += fmt::format("{}{}", names.empty() ? "" : " ", NamesOf(std::span(&kHelpOption, 1)));
    script += fmt::format("    {}) words='{}' ;;\n", command.name, names);
  }
  script += kEnd;
  return script;
}

}  // namespace mapexport
