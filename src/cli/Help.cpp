#include "cli/Help.h"

#include <string_view>

#include <fmt/format.h>

#include "host/Plugin.h"

namespace mapexport {
namespace {

constexpr std::size_t kTextColumn = 28;
constexpr std::size_t kTextWidth = 80 - kTextColumn;

/// Appends `text` in lines of kTextWidth from kTextColumn on. `head` precedes it, on a separate
/// line when it is too long.
void AppendEntry(std::string& out, std::string_view head, std::string_view text) {
  std::string line = fmt::format("  {}", head);
  if (line.size() + 2 > kTextColumn) {
    out += line + '\n';
    line.clear();
  }
  while (!text.empty()) {
    std::size_t end = text.size();
    if (end > kTextWidth) {
      const std::size_t blank = text.rfind(' ', kTextWidth);
      end = blank == std::string_view::npos ? text.size() : blank;
    }
    line.resize(kTextColumn, ' ');
    out += line.append(text.substr(0, end)) + '\n';
    line.clear();
    text.remove_prefix(end == text.size() ? end : end + 1);
  }
}

void AppendOptions(std::string& out, std::span<const OptionInfo> options, bool ofControls) {
  for (const OptionInfo& option : options) {
    if ((option.control != 0) == ofControls) {
      AppendEntry(out, OptionHead(option), OptionHelp(option));
    }
  }
}

}  // namespace

std::string UsageLine(const CommandInfo* command) {
  if (command == nullptr) return "usage: mapexport COMMAND ARGUMENTS... [options]";
  std::string line = fmt::format("usage: mapexport {}", command->name);
  for (const PositionalInfo& positional : command->positionals) {
    line += ' ' + PositionalHead(positional);
  }
  if (command->otherForm != nullptr) line += fmt::format(" | {}", command->otherForm);
  return line + " [options]";
}

std::string PositionalHead(const PositionalInfo& positional) {
  return positional.isOptional ? fmt::format("[{}]", positional.name) : positional.name;
}

std::string OptionHead(const OptionInfo& option) {
  std::string head = option.letter == '\0' ? "" : fmt::format("-{}, ", option.letter);
  head += fmt::format("--{}", option.name);
  if (option.kind == OptionKind::kSwitch) head += fmt::format(", --no-{}", option.name);
  if (option.argument != nullptr) head += fmt::format(" {}", option.argument);
  return head;
}

std::string OptionHelp(const OptionInfo& option) {
  std::string help = option.help;
  for (std::size_t i = 0; i < option.rows.size(); ++i) {
    help += fmt::format("{}{} or {}", i == 0 ? ": " : ", ", i, option.rows[i]);
  }
  return help;
}

std::string ProgramHelp(std::span<const CommandInfo> commands) {
  std::string out = "mapexport exports scenes to model files and reads model files back.\n\n";
  out += UsageLine(nullptr) + "\n\nCommands:\n";
  for (const CommandInfo& command : commands) AppendEntry(out, command.name, command.summary);
  out += "\nOptions:\n";
  AppendOptions(out, kProgramOptions, false);
  out += "\nExit statuses:\n";
  for (const ExitStatusInfo& info : kExitStatuses) {
    AppendEntry(out, fmt::format("{}", static_cast<int>(info.status)), info.meaning);
  }
  out += "\n`mapexport help COMMAND` lists a command's arguments and options.\n";
  return out;
}

std::string CommandHelp(const CommandInfo& command) {
  std::string out =
      fmt::format("mapexport {}: {}\n\n{}\n", command.name, command.summary, UsageLine(&command));
  if (!command.positionals.empty()) out += '\n';
  for (const PositionalInfo& positional : command.positionals) {
    AppendEntry(out, positional.name, positional.help);
  }
  std::string controls;
  AppendOptions(controls, command.options, true);
  if (!controls.empty()) {
    out +=
        "\nControls of the options dialog; one that is not given keeps its remembered value, at\n";
    out += "first or with --fresh the one in parentheses:\n";
    out += controls;
    out += "  X is a decimal number. Of a repeated option the last one counts.\n";
  }
  out += "\nOptions:\n";
  AppendOptions(out, command.options, false);
  AppendOptions(out, std::span(&kHelpOption, 1), false);
  return out;
}

std::string VersionText() {
  return fmt::format("mapexport {} (plug-in interface {:#x})\n", MAPEXPORT_VERSION,
                     kHostApiVersion);
}

}  // namespace mapexport
