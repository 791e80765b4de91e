#include "cli/CommandLine.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "cli/NearestName.h"

namespace mapexport {
namespace {

bool TakesValue(OptionKind kind) {
  return kind != OptionKind::kFlag && kind != OptionKind::kSwitch;
}

const CommandInfo* FindCommand(std::span<const CommandInfo> commands, std::string_view name) {
  const auto found = std::ranges::find(commands, name, &CommandInfo::name);
  return found == commands.end() ? nullptr : &*found;
}

/// Refuses the "--name=value" forms that the parser would misread: a flag with a value, and an
/// empty value, in whose place it would take the next argument.
void CheckEqualSigns(const std::vector<std::string>& arguments, const CommandInfo* command) {
  for (const std::string& argument : arguments) {
    if (argument == "--") return;
    const std::size_t equalSign = argument.find('=');
    if (!argument.starts_with("--") || equalSign == std::string::npos) continue;
    const std::string_view name = std::string_view(argument).substr(2, equalSign - 2);
    const auto isFlag = [&](const OptionInfo& option) {
      return !TakesValue(option.kind) &&
             (name == option.name || name == fmt::format("no-{}", option.name));
    };
    if (std::ranges::any_of(kProgramOptions, isFlag) ||
        (command != nullptr && std::ranges::any_of(command->options, isFlag))) {
      throw UsageError(fmt::format("--{} takes no value", name), command);
    }
    if (equalSign + 1 == argument.size()) {
      throw UsageError(fmt::format("--{}: the value after \"=\" is missing", name), command);
    }
  }
}

/// The forms of all options, as they are typed.
std::vector<std::string> FormsOf(std::span<const OptionInfo> options) {
  std::vector<std::string> forms;
  for (const OptionInfo& option : options) {
    forms.push_back(fmt::format("--{}", option.name));
    if (option.kind == OptionKind::kSwitch) forms.push_back(fmt::format("--no-{}", option.name));
    if (option.letter != '\0') forms.push_back(fmt::format("-{}", option.letter));
  }
  return forms;
}

/// Without a command, the first argument must be an option of the program itself.
void CheckProgramOption(std::span<const CommandInfo> commands,
                        const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw UsageError("a command is missing", nullptr);
  const std::string& first = arguments.front();
  if (!first.starts_with('-')) RequireCommand(commands, first);
  const std::vector<std::string> forms = FormsOf(kProgramOptions);
  if (std::ranges::find(forms, first) != forms.end()) return;
  throw UsageError(
      fmt::format("\"{}\" is given instead of a command{}", first, Suggestion(first, forms)),
      nullptr);
}

/// Ends arguments in brackets, which the parser would take for a list. No argument contains it.
constexpr char kArgumentEnd = '\0';

std::string WithoutEnd(const std::string& argument) {
  return argument.substr(0, argument.find(kArgumentEnd));
}

std::string ParserNames(const OptionInfo& option) {
  std::string names = option.letter == '\0' ? "" : fmt::format("-{},", option.letter);
  names += fmt::format("--{}", option.name);
  if (option.kind == OptionKind::kSwitch) names += fmt::format(",!--no-{}", option.name);
  return names;
}

/// The parser's form of a command.
struct CommandParser {
  const CommandInfo* info;
  CLI::App* app;
  std::vector<CLI::Option*> positionals;
  std::vector<CLI::Option*> options;  ///< parallel to info->options
};

CommandParser AddCommand(CLI::App& program, const CommandInfo& info) {
  CommandParser parser{&info, program.add_subcommand(info.name), {}, {}};
  for (const PositionalInfo& positional : info.positionals) {
    parser.positionals.push_back(
        parser.app->add_option(positional.name)->required(!positional.isOptional));
    if (info.otherForm == nullptr) continue;
    // The first one takes them all.
    parser.positionals.back()->expected(CLI::detail::expected_max_vector_size);
    break;
  }
  for (const OptionInfo& option : info.options) {
    CLI::Option* added = TakesValue(option.kind) ? parser.app->add_option(ParserNames(option))
                                                 : parser.app->add_flag(ParserNames(option));
    if (TakesValue(option.kind)) added->type_name(option.argument);
    parser.options.push_back(added->multi_option_policy(CLI::MultiOptionPolicy::TakeLast));
  }
  return parser;
}

/// Refuses what the parser left over: options that the command does not have, else the first
/// argument.
void RefuseRest(const CLI::App& program, const CommandParser& parser) {
  for (const std::string& argument : parser.app->remaining()) {
    if (!argument.starts_with('-')) continue;
    std::vector<std::string> forms = FormsOf(parser.info->options);
    forms.push_back(fmt::format("--{}", kHelpOption.name));
    const std::string name = argument.substr(0, argument.find('='));
    throw UsageError(
        fmt::format("{} has no option \"{}\"{}", parser.info->name, name, Suggestion(name, forms)),
        parser.info);
  }
  for (const std::string& argument : program.remaining(true)) {
    if (argument == "--") continue;
    throw UsageError(fmt::format("\"{}\" is one argument too many", WithoutEnd(argument)),
                     parser.info);
  }
}

CommandLine Collect(const CommandParser& parser) {
  CommandLine line;
  line.command = parser.info;
  for (const CLI::Option* positional : parser.positionals) {
    for (const std::string& value : positional->results()) {
      line.positionals.push_back(WithoutEnd(value));
    }
  }
  for (std::size_t i = 0; i < parser.options.size(); ++i) {
    // The results as given on the command line: the parser's own conversions treat some texts
    // specially.
    CLI::results_t results = parser.options[i]->results();
    if (results.empty()) continue;
    const OptionInfo& option = parser.info->options[i];
    for (std::string& value : results) {
      value = WithoutEnd(value);
      if (option.kind == OptionKind::kFlag) value.clear();
      if (option.kind == OptionKind::kSwitch) value = value == "true" ? "on" : "off";
    }
    line.options.emplace(option.name, std::move(results));
  }
  return line;
}

}  // namespace

std::optional<std::string> CommandLine::Value(std::string_view option) const {
  const auto found = options.find(option);
  if (found == options.end()) return std::nullopt;
  return found->second.back();
}

std::span<const std::string> CommandLine::Values(std::string_view option) const {
  const auto found = options.find(option);
  if (found == options.end()) return {};
  return found->second;
}

const CommandInfo& RequireCommand(std::span<const CommandInfo> commands, std::string_view name) {
  if (const CommandInfo* const command = FindCommand(commands, name)) return *command;
  std::vector<std::string> names;
  for (const CommandInfo& command : commands) names.emplace_back(command.name);
  throw UsageError(fmt::format("there is no command \"{}\"{}", name, Suggestion(name, names)),
                   nullptr);
}

CommandLine ParseCommandLine(std::span<const CommandInfo> commands,
                             const std::vector<std::string>& arguments) {
  const CommandInfo* command =
      arguments.empty() ? nullptr : FindCommand(commands, arguments.front());
  CheckEqualSigns(arguments, command);
  if (command == nullptr) CheckProgramOption(commands, arguments);

  CLI::App program;
  program.set_help_flag("-h,--help");
  program.set_version_flag("--version", std::string());
  program.add_flag("--verbose");
  program.require_subcommand(1);
  std::vector<CommandParser> parsers;
  for (const CommandInfo& info : commands) parsers.push_back(AddCommand(program, info));

  CommandLine line;
  const auto used = [&] {
    return std::ranges::find_if(parsers, [](const CommandParser& p) { return p.app->parsed(); });
  };
  try {
    // The parser takes them from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    for (std::string& argument : reversed) {
      if (argument.starts_with('[')) argument += kArgumentEnd;
    }
    program.parse(std::move(reversed));
    line = Collect(*used());
  } catch (const CLI::CallForHelp&) {
    line.wanted = CommandLine::Wanted::kHelp;
    line.command = used() == parsers.end() ? nullptr : used()->info;
  } catch (const CLI::CallForVersion&) {
    line.wanted = CommandLine::Wanted::kVersion;
    line.verbose = std::ranges::find(arguments, "--verbose") != arguments.end();
  } catch (const CLI::ArgumentMismatch&) {
    // Only when the arguments ran out: the last one is an option without its value.
    throw UsageError(fmt::format("{}: a value is missing", arguments.back()), command);
  } catch (const CLI::ParseError& error) {
    if (used() == parsers.end()) throw UsageError("a command is missing", nullptr);
    RefuseRest(program, *used());
    throw UsageError(error.what(), command);
  }
  return line;
}

}  // namespace mapexport
