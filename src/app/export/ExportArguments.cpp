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

constexpr const char* kOutputFolder = "output-folder";
constexpr const char* kJobs = "jobs";

constexpr OptionInfo kOutputLayoutOption{.name = kLayoutOption.name,
                                         .kind = kText,
                                         .argument = "LAYOUT",
                                         .help = "with --output-folder: qob, or kob (the default)",
                                         .words = kLayouts};

constexpr OptionInfo kAllowOption{
    .name = "allow",
    .kind = kText,
    .argument = "CODE",
    .help =
        "let warnings of that code pass --strict, for example list-too-long; can be repeated; "
        "--report writes the codes",
    .words = kRemarkCodes,
    .repeats = true};

constexpr std::array kMessageForms{"text", "json"};
constexpr OptionInfo kMessagesOption{
    .name = "messages",
    .kind = kText,
    .argument = "FORM",
    .help = "text, or json: each line of standard error is one object",
    .words = kMessageForms};

constexpr std::array kOptions{
    OptionInfo{.name = "weld",
               .kind = kSwitch,
               .help = "\"Weld Vertices\" (on): vertices within the weld distance become one",
               .control = kWeldControl},
    OptionInfo{.name = "weld-distance",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Weld Distance:\" (0.2), in host units",
               .control = kWeldDistanceControl},
    OptionInfo{.name = "remove-t-vertices",
               .kind = kSwitch,
               .help = "\"Remove T-Vertices\" (off): no effect on the output, but while it is "
                       "set, welding can't be switched off",
               .control = kRemoveTVerticesControl},
    OptionInfo{.name = "min-triangle-area",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Min Triangle Area:\" (1): no effect on the output",
               .control = kMinTriangleAreaControl},
    OptionInfo{.name = "snap",
               .kind = kSwitch,
               .help = "\"Snap To Grid\" (off): no effect on the output",
               .control = kSnapControl},
    OptionInfo{.name = "snap-dimension",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Snap Dimension:\" (1): no effect on the output",
               .control = kSnapDimensionControl},
    OptionInfo{.name = "clean",
               .kind = kSwitch,
               .help = "\"Clean Vertex Attributes\" (on): equal normals, texture coordinates and "
                       "colours at a vertex are shared",
               .control = kCleanControl},
    OptionInfo{.name = "lighting-multiplier",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Lighting Multiplier:\" (1): no effect on the output",
               .control = kLightingMultiplierControl},
    OptionInfo{.name = "talvern-light-format",
               .kind = kSwitch,
               .help = "\"Talvern Light Format\" (off): no effect on the output, not remembered",
               .control = kLightFormatControl},
    OptionInfo{.name = "voxel-size",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Voxel Size:\" (1000): edge of the cells that render batches are made of",
               .control = kVoxelSizeControl},
    OptionInfo{
        .name = "cxp",
        .kind = kText,
        .argument = "FILE",
        .help =
            "\"CXP Filename\" (none): the text database that lists the transparent textures, as if "
            "picked with Browse; relative to the current directory",
        .control = kBrowseControl},
    OptionInfo{.name = "coordinates",
               .kind = kRow,
               .argument = "SYSTEM",
               .help = "\"Export Coordinate System\" (0)",
               .control = kCoordinatesControl,
               .rows = kCoordinateSystems},
    OptionInfo{.name = "texture-coordinates",
               .kind = kRow,
               .argument = "MODE",
               .help = "\"Texture Coordinates\" (0)",
               .control = kTextureCoordinatesControl,
               .rows = kTextureModes},
    OptionInfo{.name = "split",
               .kind = kFlag,
               .help = "divide a group with a list longer than 16-bit indices can address into "
                       "groups NAME, NAME_2, ... whose lists fit; a loader must loop over the "
                       "groups, and material indices are the file's",
               .shapesOutput = true},
    OptionInfo{.name = "longest-list",
               .kind = kText,
               .argument = "N",
               .help = "3 to 65536: --split with lists of at most N entries",
               .shapesOutput = true},
    OptionInfo{
        .name = "dialog",
        .kind = kFlag,
        .help = "show the options dialog in a window: the controls given above are set first, then "
                "the person decides"},
    OptionInfo{
        .name = "settings",
        .kind = kText,
        .argument = "FILE",
        .help = "the settings store to use instead of the user's own; it need not exist yet"},
    OptionInfo{.name = "fresh",
               .kind = kFlag,
               .help = "start from the initial values and save nothing; neither a store named by "
                       "--settings nor a mapexport.toml is used"},
    OptionInfo{.name = "seed",
               .kind = kText,
               .argument = "N",
               .help = "0 to 4294967295: the same scene, options and seed give the same bytes",
               .shapesOutput = true},
    kUpOption,
    kSceneScaleOption,
    kHiddenOption,
    kReadLimitOption,
    kKeywordsOption,
    kOneSidedOption,
    OptionInfo{
        .name = "strict",
        .kind = kFlag,
        .help = "a warning is an error: status 1, and nothing is replaced; lists that are too long "
                "and an output without triangles are warnings here"},
    kAllowOption,
    OptionInfo{.name = kOutputFolder,
               .kind = kText,
               .argument = "DIR",
               .help =
                   "export any number of scenes, each in a process of its own, to DIR/NAME.kob, "
                   "with the log DIR/NAME.ExportDebug.txt; NAME is the scene's file name "
                   "without its extension; a missing DIR is made"},
    kOutputLayoutOption,
    OptionInfo{.name = kJobs,
               .kind = kText,
               .argument = "N",
               .help = "with --output-folder: at most N scenes at once; unless given, as many as "
                       "there are processors; fewer when they might not fit into memory"},
    OptionInfo{.name = "textures",
               .kind = kText,
               .argument = "DIR",
               .help = "look for each texture in this folder, by its name without extension, in "
                       "whatever case; can be repeated; one that is not found is a warning",
               .repeats = true},
    OptionInfo{.name = "copy-textures",
               .kind = kText,
               .argument = "DIR",
               .help = "copy the textures that are found to this folder, and replace nothing that "
                       "differs; a missing DIR is made; without --textures they are looked for "
                       "where the scene names them "
                       "and beside it"},
    OptionInfo{.name = "depfile",
               .kind = kText,
               .argument = "FILE",
               .help = "write a make rule that names every file the output depends on"},
    OptionInfo{
        .name = "report",
        .kind = kText,
        .argument = "FILE",
        .help =
            "write a JSON report: counts, warnings, times, SHA-256; also when the export fails; "
            "\"-\": to standard output"},
    OptionInfo{.name = "repeat",
               .kind = kText,
               .argument = "REPORT",
               .help = "export again what --report wrote of, with its scene, options and seed, to "
                       "the same bytes; an input that has changed is an error. OUTPUT is the only "
                       "argument then"},
    OptionInfo{.name = "show-options",
               .kind = kFlag,
               .help = "export nothing: print each option that shapes the output, its value and "
                       "where that comes from; OUTPUT may be left out"},
    OptionInfo{
        .name = "log",
        .kind = kText,
        .argument = "FILE",
        .help =
            "where the exporter's log goes instead of ExportDebug.txt in the current directory"},
    OptionInfo{.name = "no-log", .kind = kFlag, .help = "write no log"},
    kQuietOption,
    OptionInfo{
        .name = "verbose", .kind = kFlag, .help = "print also versions, unit factors and times"},
    kMessagesOption,
};

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

std::span<const OptionInfo> ExportOptions() {
  return kOptions;
}

ExportArguments ReadExportArguments(const CommandLine& line) {
  ExportArguments arguments;
  arguments.given = line.options;
  arguments.scene = SceneOf(line);
  ReadFiles(line, arguments);
  for (const OptionInfo& option : kOptions) {
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
  for (const std::string& folder : line.Values("textures")) {
    arguments.textures.push_back(RequirePath(line, "--textures", folder));
  }
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
  one.quiet = true;
  return one;
}

}  // namespace mapexport
