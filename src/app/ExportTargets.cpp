#include "app/ExportTargets.h"

#include <array>
#include <cstdint>
#include <variant>

#include <unistd.h>

#include "system/RunError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

// Where the exporter remembers its database.
constexpr const char* kExporterKey = R"(Software\Corvantis\Talvern\Exporter)";
constexpr const char* kCxpValue = "CXP Filename";
constexpr const char* kCxpInput = "CXP database";
constexpr const char* kOutput = "output";
constexpr const char* kDepFile = "file of --depfile";

/// The picked path of the database; nothing when none is picked.
const std::string* PickedCxp(const ExportArguments& arguments) {
  for (const DialogAction& action : arguments.actions) {
    if (const auto* const picked = std::get_if<PickFile>(&action)) return &picked->path;
  }
  return nullptr;
}

/// As the exporter reads it: a text that its buffer does not hold counts as none.
std::string RememberedCxp(SettingsStore& settings) {
  HKEY key = nullptr;
  if (settings.CreateKey(RegistryRoot::kLocalMachine, kExporterKey, nullptr, RegistryAccess::kQuery,
                         key) != kRegSuccess) {
    return {};
  }
  std::array<char, 256> text{};
  auto size = static_cast<std::uint32_t>(text.size());
  const LSTATUS status =
      settings.QueryValue(key, kCxpValue, RegistryType::kText, text.data(), size);
  settings.CloseKey(key);
  return status == kRegSuccess ? text.data() : std::string();
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

std::string SettingsPath(const ExportArguments& arguments) {
  if (arguments.fresh) return {};
  return arguments.settings.value_or(SettingsStore::DefaultPath());
}

TakenFiles NamedInputs(const ExportArguments& arguments) {
  TakenFiles inputs;
  inputs.Add(arguments.scene.path, "scene");
  if (const std::string* const picked = PickedCxp(arguments)) inputs.Add(*picked, kCxpInput);
  // Also beside --fresh: who names a store does not want it replaced.
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
  // There is nothing to lose in one that is gone, and nobody has named it for this run.
  if (access(path.c_str(), F_OK) == 0) inputs.Add(path, kCxpInput);
}

OutputTarget FindModelTarget(const ExportArguments& arguments, const TakenFiles& inputs) {
  if (IsStandardOutput(arguments.output)) {
    throw RunError(arguments.output +
                   ": a model file can't be written to standard output, since it is checked before "
                   "it is put in its place; name a file");
  }
  // Where ".map" is appended, a folder or device of the given name is a mistake all the same.
  RequireRegularFileOrNothing(arguments.output);
  return FindFree(ModelPath(arguments.output), inputs);
}

std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments, TakenFiles inputs) {
  if (!arguments.depFile) return std::nullopt;
  inputs.Add(ModelPath(arguments.output), kOutput);
  return FindFree(*arguments.depFile, inputs);
}

std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments, TakenFiles inputs) {
  if (!arguments.report || IsStandardOutput(*arguments.report)) return std::nullopt;
  inputs.Add(ModelPath(arguments.output), kOutput);
  if (arguments.depFile) inputs.Add(*arguments.depFile, kDepFile);
  return FindFree(*arguments.report, inputs);
}

}  // namespace mapexport
