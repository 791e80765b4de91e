#include "app/export/RecordedRun.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "app/export/ExportArguments.h"
#include "app/export/ExportTargets.h"
#include "cli/OptionReading.h"
#include "modelreader/ModelFile.h"
#include "output/Sha256.h"
#include "scene/FileText.h"
#include "scene/JsonDocument.h"
#include "scene/JsonValue.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr const char* kFormat = "mapexport-report";
constexpr std::int64_t kVersion = 1;
constexpr std::size_t kDepth = 8;
constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string ReadSha256(JsonValue& value) {
  constexpr std::size_t kDigits = 64;
  std::string text = value.ReadText();
  if (text.size() != kDigits || text.find_first_not_of(kHexDigits) != text.npos) {
    value.Fail("is not 64 hexadecimal digits in lower case");
  }
  return text;
}

std::string ReadPath(JsonValue& value) {
  std::string path = value.ReadText();
  if (path.empty()) value.Fail("the path is empty");
  return path;
}

InputFile ReadInput(JsonValue& value) {
  InputFile input;
  value.ReadObject(JsonMember{"path", [&](JsonValue& path) { input.path = ReadPath(path); }},
                   JsonMember{"sha256", [&](JsonValue& sha) { input.sha256 = ReadSha256(sha); }});
  if (input.path.empty()) value.Fail("has no path");
  return input;
}

/// The value as CommandLine has it; nothing for a flag that is off.
std::optional<std::string> ReadOption(const OptionInfo& option, JsonValue& value) {
  switch (option.kind) {
    case OptionKind::kFlag:
      return value.ReadBool() ? std::optional<std::string>("") : std::nullopt;
    case OptionKind::kSwitch:
      return value.ReadBool() ? "on" : "off";
    default:
      return value.ReadText();
  }
}

GivenOptions ReadOptions(JsonValue& value) {
  GivenOptions options;
  JsonObject members(value);
  const auto read = [&](std::string_view name, JsonValue& member) {
    const auto option = std::ranges::find(ExportOptions(), name, &OptionInfo::name);
    // Without one that this version does not know, the output would be another.
    if (option == ExportOptions().end()) member.Fail("export has no such option");
    if (!ShapesOutput(*option)) {
      member.Skip();
    } else if (options.contains(name)) {
      member.Fail("is given twice");
    } else if (std::optional<std::string> text = ReadOption(*option, member)) {
      options[std::string(name)] = {std::move(*text)};
    }
  };
  while (members.ReadAnyMember(read)) {
  }
  return options;
}

RecordedRun ReadRun(const std::string& path) {
  RecordedRun run;
  run.report = path;
  const FileText text(path, JsonDocument::CheckBeginning);
  JsonDocument document(path, text.View(), kDepth);
  std::string format;
  std::optional<std::int64_t> version;
  std::optional<std::int64_t> seed;
  JsonObject(document).ReadMembers(
      JsonMember{"format", [&](JsonValue& value) { format = value.ReadText(); }},
      JsonMember{"version", [&](JsonValue& value) { version = value.ReadInteger(0, UINT32_MAX); }},
      JsonMember{"program", [&](JsonValue& value) { run.program = value.ReadText(); }},
      JsonMember{"scene", [&](JsonValue& value) { run.scene = ReadPath(value); }},
      JsonMember{"sha256", [&](JsonValue& value) { run.sha256 = ReadSha256(value); }},
      JsonMember{"seed", [&](JsonValue& value) { seed = value.ReadInteger(0, UINT32_MAX); }},
      JsonMember{"options", [&](JsonValue& value) { run.options = ReadOptions(value); }},
      JsonMember{"inputs",
                 [&](JsonValue& value) { run.inputs = value.ReadList<InputFile>(ReadInput); }},
      JsonMember{"after", [&](JsonValue& value) {
                   value.ReadObject(JsonMember{
                       "layout", [&](JsonValue& layout) { run.layout = layout.ReadText(); }});
                 }});
  document.End();
  const auto require = [&](bool condition, const std::string& lack) {
    if (!condition) throw RunError(fmt::format("{}: {}", path, lack));
  };
  require(format == kFormat, fmt::format("is not the report of one export: its format is not "
                                         "\"{}\"",
                                         kFormat));
  require(version == kVersion, fmt::format("its version is not {}", kVersion));
  require(!run.sha256.empty(), "is of an export that was not done, so there is nothing to repeat");
  require(seed && !run.scene.empty() && !run.layout.empty() && !run.options.empty() &&
              !run.inputs.empty(),
          "holds too little to repeat the export: scene, after.layout, seed, options or inputs are "
          "missing");
  run.seed = static_cast<std::uint32_t>(*seed);
  return run;
}

/// Checks the values of the options, as if they were given.
void CheckOptions(const CommandLine& line, const RecordedRun& run) {
  try {
    ReadExportArguments(RepeatingLine({line.command, line.positionals, {}}, run));
  } catch (const UsageError& error) {
    throw RunError(fmt::format("{}: options: {}", run.report, error.what()));
  }
}

/// " (it was exported by version 0.9.0)" when that is another one.
std::string OtherVersion(const RecordedRun& run) {
  if (run.program == MAPEXPORT_VERSION) return {};
  return fmt::format(" (version {} exported it, this is {})", run.program, MAPEXPORT_VERSION);
}

}  // namespace

std::optional<RecordedRun> FindRecordedRun(const CommandLine& line) {
  const std::optional<std::string> report = PathValue(line, "repeat");
  if (!report) return std::nullopt;
  if (line.positionals.size() != 1 || line.Has("output-folder")) {
    throw UsageError("--repeat takes OUTPUT alone: the report names the scene", line.command);
  }
  for (const OptionInfo& option : ExportOptions()) {
    const std::string_view name = option.name;
    if (!line.Has(name)) continue;
    if (!ShapesOutput(option) && name != "settings" && name != "dialog") continue;
    throw UsageError(
        fmt::format("--repeat and --{} exclude each other: the report has all options", name),
        line.command);
  }
  RecordedRun run = ReadRun(*report);
  CheckOptions(line, run);
  return run;
}

CommandLine RepeatingLine(const CommandLine& line, const RecordedRun& run) {
  CommandLine whole = line;
  whole.positionals.insert(whole.positionals.begin(), run.scene);
  whole.options.insert(run.options.begin(), run.options.end());
  whole.options["fresh"] = {""};
  whole.options["seed"] = {std::to_string(run.seed)};
  return whole;
}

void RequireSameInputs(const RecordedRun& run, const std::string& output) {
  const std::string layout =
      reader::LayoutOfName(ModelPath(output)) == ModelLayout::kQob ? "qob" : "kob";
  if (layout != run.layout) {
    throw RunError(
        fmt::format("{}: its extension stands for the layout {}, but {} is the report "
                    "of an export in the layout {}",
                    output, layout, run.report, run.layout));
  }
  for (const InputFile& input : run.inputs) {
    if (input.sha256.empty()) {
      throw RunError(
          fmt::format("{}: was no regular file in the run that {} reports, so it can't "
                      "be read again",
                      input.path, run.report));
    }
    if (Sha256OfFile(input.path) != input.sha256) {
      throw RunError(
          fmt::format("{}: has changed since the run that {} reports: its SHA-256 is "
                      "another",
                      input.path, run.report));
    }
  }
}

void RequireSameResult(const RecordedRun& run, std::span<const InputFile> inputs,
                       const std::string& output, const std::string& sha256) {
  for (const InputFile& input : inputs) {
    const auto known = std::ranges::find(run.inputs, input.path, &InputFile::path);
    if (known == run.inputs.end()) {
      throw RunError(fmt::format("{}: was not read in the run that {} reports, but is now",
                                 input.path, run.report));
    }
    if (known->sha256 != input.sha256) {
      throw RunError(fmt::format("{}: changed during the export", input.path));
    }
  }
  if (sha256 == run.sha256) return;
  throw RunError(
      fmt::format("{}: not exported: the same inputs and options gave other bytes than {} "
                  "reports{}",
                  output, run.report, OtherVersion(run)));
}

}  // namespace mapexport
