#include "app/ExportTargets.h"

#include <variant>

namespace mapexport {
namespace {

void RequireNoInput(const OutputTarget& target, const ExportArguments& arguments) {
  for (const DialogAction& action : arguments.actions) {
    if (const auto* const picked = std::get_if<PickFile>(&action)) {
      RequireOther(target, picked->path, "CXP database");
    }
  }
  if (arguments.settings) RequireOther(target, *arguments.settings, "settings store");
}

/// Where a file beside the output goes; nothing without a path.
std::optional<OutputTarget> FindCompanion(const ExportArguments& arguments,
                                          const std::optional<std::string>& path) {
  if (!path) return std::nullopt;
  OutputTarget target = FindOutput(*path);
  RequireOther(target, arguments.scene.path, "scene");
  RequireOther(target, ModelPath(arguments.output), "output");
  RequireNoInput(target, arguments);
  return target;
}

}  // namespace

std::string ModelPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot + 1 != path.size();
  return hasExtension ? path : path + ".map";
}

OutputTarget FindModelTarget(const ExportArguments& arguments) {
  // Where ".map" is appended, a folder or device of the given name is a mistake all the same.
  RequireRegularFileOrNothing(arguments.output);
  OutputTarget target = FindOutput(ModelPath(arguments.output));
  RequireOther(target, arguments.scene.path, "scene");
  RequireNoInput(target, arguments);
  return target;
}

std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments) {
  return FindCompanion(arguments, arguments.depFile);
}

std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments) {
  std::optional<OutputTarget> target = FindCompanion(arguments, arguments.report);
  if (target && arguments.depFile) RequireOther(*target, *arguments.depFile, "file of --depfile");
  return target;
}

void RequireNotRead(const OutputTarget& target, std::span<const std::string> files) {
  for (const std::string& file : files) {
    RequireOther(target, file, "file that the scene is read from,");
  }
}

}  // namespace mapexport
