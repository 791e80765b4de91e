#include "app/export/ExportArguments.h"

#include <array>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "app/export/DialogControls.h"
#include "app/export/ExporterLog.h"
#include "cli/OptionReading.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "modelreader/ModelFile.h"
#include "output/OutputTarget.h"
#include "system/FileIdentity.h"
#include "system/RemarkCode.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

using enum OptionKind;

std::string NumberText(const CommandLine& line, const OptionInfo& option,
                       const std::string& value) {
  if (value.size() > kMaxBoxText) {
    throw UsageError(fmt::format("--{}: {} characters are more than the {} that the box takes",
                                 option.name, value.size(), kMaxBoxText),
                     line.command);
  }
  if (!ParseFloat(value)) {
    throw UsageError(
        fmt::format("--{}: \"{}\" is not a decimal number in the range of a 32-bit float",
                    option.name, value),
        line.command);
  }
  return value;
}

std::string PickedPath(const CommandLine& line, const OptionInfo& option,
                       const std::string& value) {
  RequirePath(line, fmt::format("--{}", option.name), value);
  std::string path = value;
  if (!path.starts_with('/')) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    if (error) throw RunError(fmt::format("the current directory: {}", ErrnoText(error.value())));
    path = (folder / value).string();
  }
  if (path.size() > kMaxPickedPath) {
    throw UsageError(fmt::format("--{}: the absolute path is {} bytes long, more than the {} that "
                                 "the file-open box can return",
                                 option.name, path.size(), kMaxPickedPath),
                     line.command);
  }
  return path;
}

/// The user action that gives the control of `option` that value.
DialogAction ActionOf(const CommandLine& line, const OptionInfo& option, const std::string& value) {
  switch (option.kind) {
    case OptionKind::kSwitch:
      return SetCheck{option.control, value == "on"};
    case OptionKind::kNumber:
      return TypeText{option.control, NumberText(line, option, value)};
    case OptionKind::kRow:
      return SelectRow{option.control, RowValue(line, option).value()};
    case OptionKind::kText:
      return PickFile{option.control, PickedPath(line, option, value)};
    case OptionKind::kFlag:
      break;
  }
  throw std::logic_error("a flag operates no control");
}

/// The most entries that a list may have, 0 for any number.
std::uint32_t LongestList(const CommandLine& line) {
  constexpr std::uint32_t kFaceVertices = 3;
  constexpr auto kMost = static_cast<std::uint32_t>(kModelIndexLimit);
  const std::optional<std::uint32_t> given = WholeValue(line, "longest-list");
  if (!given) return line.Has("split") ? kMost : 0;
  if (*given >= kFaceVertices && *given <= kMost) return *given;
  throw UsageError(
      fmt::format("--longest-list: {} is out of range ({} to {})", *given, kFaceVertices, kMost),
      line.command);
}

/// The scene's file name without its extension.
std::string SceneName(const CommandLine& line, const std::string& path) {
  const std::string name = NamePart(RequirePath(line, "SCENE", path));
  for (const std::string_view ending : {".scene.json", ".scene.bin"}) {
    if (name.size() > ending.size() && name.ends_with(ending)) {
      return name.substr(0, name.size() - ending.size());
    }
  }
  const std::size_t dot = name.rfind('.');
  if (!name.empty()) return dot == 0 ? name : name.substr(0, dot);
  throw UsageError(fmt::format("\"{}\" names a folder, not a scene", path), line.command);
}

std::vector<ExportArguments::Job> ReadJobs(const CommandLine& line, std::string folder) {
  for (const char* option : {"dialog", "log"}) {
    if (!line.Has(option)) continue;
    throw UsageError(fmt::format("--{} and --{} exclude each other", option, kOutputFolder),
                     line.command);
  }
  if (!folder.ends_with('/')) folder += '/';
  const bool isQob = LayoutValue(line) == ModelLayout::kQob;
  std::vector<ExportArguments::Job> jobs;
  std::map<std::string, std::string> scenes;
  for (const std::string& scene : line.positionals) {
    const std::string name = SceneName(line, scene);
    const auto [other, isNew] = scenes.try_emplace(name, scene);
    if (!isNew) {
      throw UsageError(fmt::format("{} and {} would both be exported to {}{}", other->second, scene,
                                   name, isQob ? ".qob" : ".kob"),
                       line.command);
    }
    jobs.push_back({scene, folder + name + (isQob ? ".qob" : ".kob"),
                    fmt::format("{}{}.{}", folder, name, ExporterLog::kName)});
  }
  return jobs;
}

/// Reads what is exported to where.
void ReadFiles(const CommandLine& line, ExportArguments& arguments) {
  arguments.outputFolder = PathValue(line, kOutputFolder);
  arguments.mostAtOnce = WholeValue(line, kJobs);
  if (arguments.outputFolder) {
    arguments.jobs = ReadJobs(line, *arguments.outputFolder);
    if (arguments.mostAtOnce == 0U) {
      throw UsageError(fmt::format("--{}: at least 1 is needed", kJobs), line.command);
    }
    return;
  }
  for (const char* option : {kJobs, kLayoutOption.name}) {
    if (!line.Has(option)) continue;
    throw UsageError(fmt::format("--{} needs --{}", option, kOutputFolder), line.command);
  }
  if (line.positionals.size() < 2) throw UsageError("OUTPUT is required", line.command);
  if (line.positionals.size() > 2) {
    throw UsageError(fmt::format("\"{}\" is one argument too many; several scenes need --{}",
                                 line.positionals[2], kOutputFolder),
                     line.command);
  }
  arguments.output = PositionalPath(line, 1);
}

}  // namespace

ExportArguments ReadExportArguments(const CommandLine& line) {
  ExportArguments arguments;
  arguments.given = line.options;
  arguments.scene = SceneOf(line);
  ReadFiles(line, arguments);
  for (const OptionInfo& option : ExportOptions()) {
    const std::optional<std::string> value = line.Value(option.name);
    if (option.control == 0 || !value) continue;
    arguments.actions.push_back(ActionOf(line, option, *value));
    if (option.control == kWeldControl) arguments.unweld = value == "off";
  }
  arguments.longestList = LongestList(line);
  arguments.dialog = line.Has("dialog");
  arguments.settings = PathValue(line, "settings");
  arguments.fresh = line.Has("fresh");
  arguments.seed = WholeValue(line, "seed");
  arguments.strict = line.Has("strict");
  const std::span<const std::string> allowed = WordValues(line, kAllowOption);
  arguments.allowed.assign(allowed.begin(), allowed.end());
  arguments.textures = PathValues(line, "textures");
  arguments.copyTextures = PathValue(line, "copy-textures");
  arguments.repeat = PathValue(line, "repeat");
  arguments.depFile = PathValue(line, "depfile");
  arguments.makesRule = arguments.depFile.has_value();
  arguments.report = PathValue(line, "report");
  arguments.makesReport = arguments.report.has_value();
  if (line.Has("log") && line.Has("no-log")) {
    throw UsageError("--log and --no-log exclude each other", line.command);
  }
  arguments.log = PathValue(line, "log");
  arguments.noLog = line.Has("no-log");
  for (const char* option : {"depfile", "log"}) {
    if (const auto path = line.Value(option); path && IsStandardOutput(*path)) {
      throw UsageError(fmt::format("--{}: it can't go to standard output; name a file", option),
                       line.command);
    }
  }
  arguments.watch = line.Has("watch");
  arguments.view = line.Has("view");
  arguments.quiet = line.Has("quiet");
  arguments.verbose = line.Has("verbose");
  if (arguments.quiet && arguments.verbose) {
    throw UsageError("--quiet and --verbose exclude each other", line.command);
  }
  WordValue(line, kMessagesOption);  // the program has found it out already
  return arguments;
}

ExportArguments ArgumentsOf(const ExportArguments& all, const ExportArguments::Job& job) {
  ExportArguments one = all;
  one.scene.path = job.scene;
  one.output = job.output;
  one.log = job.log;
  one.jobs.clear();
  one.depFile.reset();
  one.report.reset();
  one.quiet = !all.verbose;
  return one;
}

}  // namespace mapexport
