#include "app/ShownModel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "app/Commands.h"
#include "app/LoadModel.h"
#include "app/export/ExportAside.h"
#include "app/export/ExportOptions.h"
#include "cli/Formats.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "importer/SourceFile.h"
#include "modelreader/ReadModelFile.h"
#include "output/TakenFiles.h"
#include "scene/SceneFile.h"
#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

/// By its name. Standard input is a scene unless it begins as a model file; of a pipe, which is no
/// model file, nothing is read here.
bool IsScene(const std::string& path) {
  if (path != "/dev/stdin") return IsSceneFile(path) || IsReadFormat(FileExtension(path));
  std::array<std::byte, 64> beginning{};
  ReadUpTo(OpenToRead(path).Get(), beginning.data(), beginning.size(), 0);
  return !BeginsAsModel(beginning);
}

/// Whether an option of `export` is one for the scenes that are shown.
bool IsForScenes(const OptionInfo& option) {
  constexpr std::array<std::string_view, 3> kOthers{"settings", "fresh", "read-limit"};
  return ShapesOutput(option) || std::ranges::find(kOthers, option.name) != kOthers.end();
}

ShownModel ExportShown(const CommandLine& line, const std::string& path,
                       const OutputTarget& target) {
  CommandLine exportLine;
  exportLine.command = &RequireCommand(Commands(), "export");
  exportLine.positionals = {path};
  for (const OptionInfo& option : ExportOptions()) {
    const auto given = line.options.find(option.name);
    if (IsForScenes(option) && given != line.options.end()) exportLine.options.insert(*given);
  }
  ShownModel shown;
  const auto use = [&](const std::string& file, const RunReport& report) {
    ModelReadResult read = ReadModelFile(file, *report.layout);
    if (!read.Sound()) throw RunError(path + ": its model can't be read");
    shown.model = std::move(read.model);
    shown.coordinateSystem = CoordinateSystemOf(report);
  };
  try {
    shown.status = ExportAside(exportLine, target, use);
  } catch (const UsageError& error) {
    throw UsageError(error.what(), line.command);
  }
  return shown;
}

}  // namespace

const OptionInfo kShownCoordinates{
    .name = "coordinates",
    .kind = OptionKind::kRow,
    .argument = "SYSTEM",
    .help =
        "the coordinate system that a model file was exported with, left-handed unless given, by "
        "which the level is shown upright; for a scene, that of the export",
    .rows = kCoordinateSystems};

std::vector<OptionInfo> ShownOptions(std::span<const OptionInfo> own) {
  std::vector<OptionInfo> options(own.begin(), own.end());
  options.push_back(kShownCoordinates);
  options.push_back(kLayoutOption);
  for (const OptionInfo& option : ExportOptions()) {
    if (IsForScenes(option) && option.name != std::string_view(kShownCoordinates.name)) {
      options.push_back(option);
    }
  }
  return options;
}

std::optional<ShownModel> LoadShownModel(const CommandLine& line, const std::string& path,
                                         const OutputTarget& target, Messages& messages) {
  if (IsScene(path)) return ExportShown(line, path, target);
  TakenFiles inputs;
  inputs.Add(path, "model file");
  inputs.RequireFree(target);
  std::optional<LoadedModel> loaded = LoadModel(path, LayoutValue(line), messages);
  if (!loaded) return std::nullopt;
  return ShownModel{std::move(loaded->model), loaded->status, RowValue(line, kShownCoordinates)};
}

void RequireEffect(const CommandLine& line, std::span<const std::string> paths) {
  const auto scenes = std::ranges::count_if(paths, IsScene);
  if (scenes == std::ssize(paths) && line.Has(kLayoutOption.name)) {
    throw UsageError("--layout is for model files", line.command);
  }
  if (scenes > 0) return;
  for (const OptionInfo& option : ExportOptions()) {
    if (!IsForScenes(option) || option.name == std::string_view(kShownCoordinates.name)) continue;
    if (!line.Has(option.name)) continue;
    throw UsageError(fmt::format("--{} is for scenes", option.name), line.command);
  }
}

}  // namespace mapexport
