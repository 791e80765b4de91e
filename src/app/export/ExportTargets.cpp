#include "app/export/ExportTargets.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <variant>

#include <unistd.h>

#include "app/LoadScene.h"
#include "app/ModelPage.h"
#include "app/export/ExportSettings.h"
#include "app/export/ExporterLog.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCxpInput = "CXP database";
constexpr const char* kOutput = "output";
constexpr const char* kDepFile = "file of --depfile";

/// The picked path of the database; nothing when none was picked.
const std::string* PickedCxp(const ExportArguments& arguments) {
  for (const DialogAction& action : arguments.actions) {
    if (const auto* const picked = std::get_if<PickFile>(&action)) return &picked->path;
  }
  return nullptr;
}

OutputTarget FindFree(const std::string& path, const TakenFiles& taken) {
  OutputTarget target = FindOutput(path);
  taken.RequireFree(target);
  return target;
}

}  // namespace

std::string ModelPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot + 1 != path.size();
  return hasExtension ? path : path + ".map";
}

std::string LogPath(const ExportArguments& arguments) {
  return arguments.log.value_or(ExporterLog::kName);
}

TakenFiles NamedInputs(const ExportArguments& arguments) {
  TakenFiles inputs;
  AddNamedInputs(arguments.scene, inputs);
  if (const std::string* const picked = PickedCxp(arguments)) inputs.Add(*picked, kCxpInput);
  if (arguments.optionsFile) inputs.Add(*arguments.optionsFile, kOptionsInput);
  if (arguments.repeat) inputs.Add(*arguments.repeat, "report to repeat");
  // With --fresh, too: a store that the user names must not be replaced.
  if (arguments.settings) inputs.Add(*arguments.settings, "settings store");
  return inputs;
}

void AddRememberedInputs(const ExportArguments& arguments, SettingsStore& settings,
                         TakenFiles& inputs) {
  if (const std::string path = SettingsPath(arguments); !path.empty()) {
    inputs.Add(path, "settings store");
  }
  if (PickedCxp(arguments) != nullptr) return;
  AddCxp(RememberedCxp(settings), inputs);
}

void AddCxp(const std::string& path, TakenFiles& inputs) {
  // A remembered database that no longer exists can't be overwritten, and this run did not name it.
  if (access(path.c_str(), F_OK) == 0) inputs.Add(path, kCxpInput);
}

std::vector<std::string> ShapingFiles(const ExportArguments& arguments,
                                      std::vector<std::string> sideFiles, const std::string& cxp) {
  std::vector<std::string> files{arguments.scene.path};
  if (arguments.scene.keywords) files.push_back(*arguments.scene.keywords);
  for (std::string& file : sideFiles) files.push_back(std::move(file));
  if (!cxp.empty()) files.push_back(cxp);
  return files;
}

std::vector<std::string> Dependencies(const ExportArguments& arguments,
                                      std::vector<std::string> files) {
  if (arguments.optionsFile) files.push_back(*arguments.optionsFile);
  if (arguments.settings && !arguments.fresh) {
    std::error_code error;
    const fs::file_type type = fs::status(*arguments.settings, error).type();
    // A file whose type is unknown counts as present.
    const bool isUnknown = type == fs::file_type::none || type == fs::file_type::unknown;
    if (isUnknown || type == fs::file_type::regular) files.push_back(*arguments.settings);
  }
  return files;
}

OutputTarget FindModelTarget(const ExportArguments& arguments, const TakenFiles& inputs) {
  if (IsStandardOutput(arguments.output)) {
    throw RunError(arguments.output +
                   ": a model file can't be written to standard output, since it is checked before "
                   "it is put in its place; name a file");
  }
  // When ".map" is appended, a folder or device with the given name is still a mistake.
  RequireRegularFileOrNothing(arguments.output);
  return FindFree(ModelPath(arguments.output), inputs);
}

std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments, TakenFiles inputs) {
  if (!arguments.depFile) return std::nullopt;
  inputs.Add(ModelPath(arguments.output), kOutput);
  return FindFree(*arguments.depFile, inputs);
}

std::optional<OutputTarget> FindPageTarget(const ExportArguments& arguments, TakenFiles inputs) {
  if (!arguments.view) return std::nullopt;
  RequirePageBuilt("--view");
  inputs.Add(ModelPath(arguments.output), kOutput);
  if (arguments.depFile) inputs.Add(*arguments.depFile, kDepFile);
  return FindFree(PagePath(ModelPath(arguments.output)), inputs);
}

std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments, TakenFiles inputs) {
  if (!arguments.report) return std::nullopt;
  const std::string output = ModelPath(arguments.output);
  inputs.Add(output, kOutput);
  if (arguments.depFile) inputs.Add(*arguments.depFile, kDepFile);
  if (arguments.view) inputs.Add(PagePath(output), "page");
  return FindFree(*arguments.report, inputs);
}

}  // namespace mapexport
