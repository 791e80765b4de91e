#include <string_view>

#include <fmt/format.h>

#include "cli/CompletionParts.h"
#include "cli/Pages.h"

namespace mapexport {
namespace {

/// A line for what can be written while `condition` holds.
std::string FishLine(std::string_view condition, std::string_view what, std::string_view help) {
  return fmt::format("complete -c mapexport -n '{}' {} -d '{}'\n", condition, what,
                     WithBackslashes(ShortHelp(help), "\\'"));
}

/// What a value is: files, words or nothing that can be completed.
std::string FishValue(const OptionInfo& option) {
  if (option.argument == nullptr) return {};
  if (ValueIsPath(option)) return " -r -F";
  return ValueWords(option).empty()
             ? " -x"
             : fmt::format(" -x -a '{}'", fmt::join(ValueWords(option), " "));
}

void AppendFishOption(std::string& script, std::string_view condition, const OptionInfo& option) {
  const std::string letter = option.letter == '\0' ? "" : fmt::format("-s {} ", option.letter);
  const std::string head = fmt::format("{}-l {}{}", letter, option.name, FishValue(option));
  script += FishLine(condition, head, option.help);
  if (option.kind == OptionKind::kSwitch) {
    script += FishLine(condition, fmt::format("-l no-{}", option.name),
                       fmt::format("not {}", option.help));
  }
}

}  // namespace

std::string FishCompletion(std::span<const CommandInfo> commands) {
  constexpr std::string_view kFirst = "__fish_use_subcommand";
  std::string script = "# fish completion for mapexport\n";
  script += fmt::format("complete -c mapexport -n {} -f\n", kFirst);
  std::string names;
  for (const CommandInfo& command : commands) {
    script += FishLine(kFirst, fmt::format("-a {}", command.name), command.summary);
    names += fmt::format("{}{}", names.empty() ? "" : " ", command.name);
  }
  for (const OptionInfo& option : kProgramOptions) AppendFishOption(script, kFirst, option);
  for (const CommandInfo& command : commands) {
    const std::string condition = fmt::format("__fish_seen_subcommand_from {}", command.name);
    for (const OptionInfo& option : command.options) AppendFishOption(script, condition, option);
    AppendFishOption(script, condition, kHelpOption);
  }
  script += fmt::format("complete -c mapexport -n '__fish_seen_subcommand_from help' -f -a '{}'\n",
                        names);
  return script;
}

}  // namespace mapexport
