#include <cctype>
#include <string_view>

#include <fmt/format.h>

#include "cli/Help.h"
#include "cli/Pages.h"

namespace mapexport {
namespace {

constexpr std::string_view kDescription =
    "mapexport turns a 3D scene into the model file of a game: it gathers every mesh of the "
    "scene's node tree, cleans the geometry, sorts it into render batches and collision lists, and "
    "writes a compact binary file. It also reads such files back. An output is checked "
    "before it replaces an older file.";

struct Entry {
  std::string_view head;
  std::string_view text;
};

constexpr Entry kFiles[] = {
    {"~/.config/mapexport/settings.reg",
     "The options of the last export, from which the next one starts. --settings names another "
     "file, --fresh uses none."},
    {"ExportDebug.txt",
     "The exporter's log, written in the current directory and replaced by every export."},
};

constexpr Entry kEnvironment[] = {
    {"XDG_CONFIG_HOME",
     "When it is set, the settings are in its subfolder mapexport instead of ~/.config/mapexport."},
    {"NO_COLOR", "When it is set, messages have no colours."},
};

constexpr Entry kExamples[] = {
    {"mapexport export level.fbx level.kob", "Exports a scene with the remembered options."},
    {"mapexport export level.glb level.kob --fresh --seed 1 --cxp textures.cxp --quiet",
     "Exports in a build farm: the result depends on the command line alone."},
    {"mapexport inspect level.kob", "Checks the file and prints what it holds."},
};

/// `text` for troff, with hyphens that stay hyphens.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else if (c == '~') {
      escaped += "\\(ti";
    } else if ((c == '.' || c == '\'') && escaped.empty()) {
      escaped += "\\&";  // it would begin a request
      escaped += c;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void AppendPageEntry(std::string& page, std::string_view head, std::string_view text) {
  page += fmt::format(".TP\n.B {}\n{}\n", Escaped(head), Escaped(text));
}

void AppendEntries(std::string& page, std::string_view title, std::span<const Entry> entries) {
  page += fmt::format(".SH {}\n", title);
  for (const Entry& entry : entries) AppendPageEntry(page, entry.head, entry.text);
}

void AppendSynopsis(std::string& page, std::span<const CommandInfo> commands) {
  page += ".SH SYNOPSIS\n";
  for (const CommandInfo& command : commands) {
    page += fmt::format("\\fBmapexport {}\\fR", command.name);
    for (const PositionalInfo& positional : command.positionals) {
      page += fmt::format(" \\fI{}\\fR", Escaped(PositionalHead(positional)));
    }
    page += " [options]\n.br\n";
    if (command.otherForm == nullptr) continue;
    page += fmt::format("\\fBmapexport {}\\fR {} [options]\n.br\n", command.name,
                        Escaped(command.otherForm));
  }
  page += "\\fBmapexport\\fR \\-\\-help | \\-\\-version\n";
}

void AppendCommand(std::string& page, const CommandInfo& command) {
  std::string summary = Escaped(command.summary);
  summary[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(summary[0])));
  page += fmt::format(".SS mapexport {}\n{}.\n", command.name, summary);
  for (const PositionalInfo& positional : command.positionals) {
    AppendPageEntry(page, positional.name, positional.help);
  }
  for (const OptionInfo& option : command.options) {
    AppendPageEntry(page, OptionHead(option), OptionHelp(option));
  }
}

}  // namespace

std::string ManPage(std::span<const CommandInfo> commands) {
  std::string page = fmt::format(
      ".TH MAPEXPORT 1 \"\" \"mapexport {}\" \"User Commands\"\n"
      ".SH NAME\nmapexport \\- export scenes to model files and read them back\n",
      MAPEXPORT_VERSION);
  AppendSynopsis(page, commands);
  page += fmt::format(".SH DESCRIPTION\n{}\n.SH COMMANDS\n", Escaped(kDescription));
  page += "In the options, X is a decimal number. Of a repeated option the last one counts. ";
  page += "Names in quotes are controls of the options dialog; one that is not given keeps its ";
  page +=
      "remembered value, at first or with \\fB\\-\\-fresh\\fR the one in parentheses. Every "
      "command has \\fB\\-\\-help\\fR.\n";
  for (const CommandInfo& command : commands) AppendCommand(page, command);
  page += ".SH OPTIONS\n";
  for (const OptionInfo& option : kProgramOptions) {
    AppendPageEntry(page, OptionHead(option), OptionHelp(option));
  }
  page += ".SH EXIT STATUS\n";
  for (const ExitStatusInfo& info : kExitStatuses) {
    AppendPageEntry(page, std::to_string(static_cast<int>(info.status)), info.meaning);
  }
  AppendEntries(page, "FILES", kFiles);
  AppendEntries(page, "ENVIRONMENT", kEnvironment);
  AppendEntries(page, "EXAMPLES", kExamples);
  return page;
}

}  // namespace mapexport
