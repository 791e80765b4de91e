#include "cli/Arguments.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "cli/CommandLine.h"
#include "cli/Formats.h"
#include "cli/Help.h"
#include "cli/OptionValues.h"
#include "cli/UsageError.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

std::string RequirePath(const CommandLine& line, std::string_view name, const std::string& path) {
  if (path.empty()) throw UsageError(fmt::format("{}: the path is empty", name), line.command);
  return path;
}

std::optional<std::string> PathValue(const CommandLine& line, std::string_view option) {
  std::optional<std::string> path = line.Value(option);
  if (path) RequirePath(line, fmt::format("--{}", option), *path);
  return path;
}

std::string Positional(const CommandLine& line, std::size_t index) {
  return RequirePath(line, line.command->positionals[index].name, line.positionals[index]);
}

std::string NumberText(const CommandLine& line, const OptionInfo& option,
                       const std::string& value) {
  if (value.size() > kMaxBoxText) {
    throw UsageError(fmt::format("--{}: {} characters are more than the {} that the box takes",
                                 option.name, value.size(), kMaxBoxText),
                     line.command);
  }
  if (!ParseFloat(value)) {
    throw UsageError(fmt::format("--{}: \"{}\" is no decimal number in the range of a 32-bit float",
                                 option.name, value),
                     line.command);
  }
  return value;
}

int RowNumber(const CommandLine& line, const OptionInfo& option, const std::string& value) {
  const std::optional<int> row = ParseRow(option.rows, value);
  if (!row) {
    throw UsageError(fmt::format("--{}: \"{}\" is none of 0 to {}, {}", option.name, value,
                                 option.rows.size() - 1, fmt::join(option.rows, ", ")),
                     line.command);
  }
  return *row;
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

/// What a person does to the control of `option` to give it that value.
DialogAction ActionOf(const CommandLine& line, const OptionInfo& option, const std::string& value) {
  switch (option.kind) {
    case OptionKind::kSwitch:
      return SetCheck{option.control, value == "on"};
    case OptionKind::kNumber:
      return TypeText{option.control, NumberText(line, option, value)};
    case OptionKind::kRow:
      return SelectRow{option.control, RowNumber(line, option, value)};
    case OptionKind::kText:
      return PickFile{option.control, PickedPath(line, option, value)};
    case OptionKind::kFlag:
      break;
  }
  throw std::logic_error("a flag operates no control");
}

std::optional<std::uint32_t> WholeNumber(const CommandLine& line, std::string_view option) {
  const std::optional<std::string> value = line.Value(option);
  if (!value) return std::nullopt;
  const std::optional<std::uint32_t> number = ParseWhole(*value);
  if (!number) {
    throw UsageError(
        fmt::format("--{}: \"{}\" is no whole number from 0 to 4294967295", option, *value),
        line.command);
  }
  return number;
}

UpAxis UpAxisOf(const CommandLine& line, const std::string& value) {
  if (value == "auto") return UpAxis::kAuto;
  if (value == "y") return UpAxis::kY;
  if (value == "z") return UpAxis::kZ;
  throw UsageError(fmt::format("--up: \"{}\" is none of auto, y, z", value), line.command);
}

std::optional<float> ScaleOf(const CommandLine& line, const std::string& value) {
  if (value == "auto") return std::nullopt;
  const std::optional<float> scale = ParseFloat(value);
  if (!scale || *scale <= 0) {
    throw UsageError(fmt::format("--scale: \"{}\" is neither auto nor a decimal number above 0 in "
                                 "the range of a 32-bit float",
                                 value),
                     line.command);
  }
  return scale;
}

SceneSource SceneOf(const CommandLine& line) {
  SceneSource scene;
  scene.path = Positional(line, 0);
  if (const auto up = line.Value("up")) scene.import.up = UpAxisOf(line, *up);
  if (const auto scale = line.Value("scale")) scene.import.scale = ScaleOf(line, *scale);
  scene.seconds = WholeNumber(line, "read-limit");
  return scene;
}

ExportArguments ExportOf(const CommandLine& line) {
  ExportArguments arguments;
  arguments.scene = SceneOf(line);
  arguments.output = Positional(line, 1);
  for (const OptionInfo& option : line.command->options) {
    const std::optional<std::string> value = line.Value(option.name);
    if (option.control == 0 || !value) continue;
    arguments.actions.push_back(ActionOf(line, option, *value));
    if (option.control == kWeldControl) arguments.unweld = value == "off";
  }
  arguments.dialog = line.Has("dialog");
  arguments.settings = PathValue(line, "settings");
  arguments.fresh = line.Has("fresh");
  arguments.seed = WholeNumber(line, "seed");
  arguments.depFile = PathValue(line, "depfile");
  arguments.report = PathValue(line, "report");
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
  arguments.quiet = line.Has("quiet");
  return arguments;
}

std::optional<ModelLayout> LayoutOf(const CommandLine& line) {
  const std::optional<std::string> layout = line.Value("layout");
  if (!layout) return std::nullopt;
  if (*layout == "qob") return ModelLayout::kQob;
  if (*layout == "kob") return ModelLayout::kKob;
  throw UsageError(fmt::format("--layout: \"{}\" is none of qob, kob", *layout), line.command);
}

/// The row that an option of rows names, 0 unless it is given.
int RowOption(const CommandLine& line, std::string_view name) {
  const std::optional<std::string> value = line.Value(name);
  if (!value) return 0;
  return RowNumber(line, *std::ranges::find(line.command->options, name, &OptionInfo::name),
                   *value);
}

InspectArguments InspectOf(const CommandLine& line) {
  InspectArguments arguments;
  arguments.file = Positional(line, 0);
  arguments.json = line.Has("json");
  arguments.summary = line.Has("summary");
  arguments.layout = LayoutOf(line);
  return arguments;
}

ViewArguments ViewOf(const CommandLine& line) {
  ViewArguments arguments;
  arguments.file = Positional(line, 0);
  arguments.output = PathValue(line, "output");
  arguments.layout = LayoutOf(line);
  arguments.coordinateSystem = RowOption(line, "coordinates");
  return arguments;
}

/// The format that --to names, or else the extension of `output`.
const TargetFormat& TargetFormatOf(const CommandLine& line, const std::string& output) {
  const std::optional<std::string> name = line.Value("to");
  const TargetFormat* const format = name ? FindNamedFormat(*name) : FindTargetFormat(output);
  std::vector<std::string_view> extensions;
  for (const TargetFormat& each : TargetFormats()) extensions.push_back(each.extension);
  if (IsStandardOutput(output)) {
    if (!name) {
      throw UsageError(
          fmt::format("{}: standard output has no extension; name the format by --to", output),
          line.command);
    }
    if (format != nullptr && format->aloneId == nullptr) {
      throw UsageError(
          fmt::format("--to: a {} needs a second file beside it; name a file", format->extension),
          line.command);
    }
  }
  if (format != nullptr) return *format;
  if (!name) {
    throw UsageError(
        fmt::format("{}: the extension must be one of {}", output, fmt::join(extensions, ", ")),
        line.command);
  }
  for (std::string_view& extension : extensions) extension.remove_prefix(1);
  throw UsageError(fmt::format("--to: \"{}\" is none of {}", *name, fmt::join(extensions, ", ")),
                   line.command);
}

ConvertArguments ConvertOf(const CommandLine& line) {
  ConvertArguments arguments;
  arguments.file = Positional(line, 0);
  arguments.output = Positional(line, 1);
  arguments.format = &TargetFormatOf(line, arguments.output);
  arguments.exported.coordinates = RowOption(line, "coordinates");
  arguments.exported.textureCoordinates = RowOption(line, "texture-coordinates");
  if (const auto scale = line.Value("scale")) arguments.scale = ScaleOf(line, *scale);
  arguments.layout = LayoutOf(line);
  arguments.quiet = line.Has("quiet");
  return arguments;
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& arguments) {
  const CommandLine line = ParseCommandLine(arguments);
  if (line.wanted == CommandLine::Wanted::kHelp) return ShowText{HelpText(line.command)};
  if (line.wanted == CommandLine::Wanted::kVersion) return ShowText{VersionText()};
  switch (line.command->command) {
    case Command::kExport:
      return ExportOf(line);
    case Command::kScene:
      return SceneArguments{SceneOf(line), PathValue(line, "output")};
    case Command::kInspect:
      return InspectOf(line);
    case Command::kView:
      return ViewOf(line);
    case Command::kConvert:
      return ConvertOf(line);
    case Command::kFormats:
      return ShowText{FormatsText()};
  }
  throw std::logic_error("a command without a meaning");
}

}  // namespace mapexport
