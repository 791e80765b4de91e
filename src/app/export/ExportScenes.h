// Exports several scenes, each in a process of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/export/ExportArguments.h"
#include "cli/ExitStatus.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// What became of one scene.
struct SceneResult {
  ExitStatus status = ExitStatus::kFailed;
  std::string error;     ///< why it failed, in one line
  std::string rule;      ///< of --depfile
  std::string exported;  ///< one line on the output
  std::string report;
  std::vector<std::string> sideFiles;  ///< that the scene was read from
  bool savedSettings = false;          ///< or tried to
};

/// Exports one scene, in its process, and reports to standard error. `settings` are those to start
/// from. Calls `computed` when all that is left is to put the output in place.
using ExportOne =
    std::function<SceneResult(const ExportArguments& arguments, SettingsStore settings,
                              bool savesSettings, const std::function<void()>& computed)>;

/// Exports all jobs of `arguments` by `exportOne`, prints what becomes of each, and writes one
/// report and one depfile. When a signal interrupts it, it ends by that signal: what is done stays,
/// the rest is as before. Throws RunError.
ExitStatus ExportScenes(const ExportArguments& arguments, const ExportOne& exportOne);

}  // namespace mapexport
