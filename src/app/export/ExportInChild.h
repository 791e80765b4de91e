// Exports one scene in a child process.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/export/ExportArguments.h"
#include "cli/ExitStatus.h"
#include "settings/SettingsStore.h"
#include "system/Remark.h"
#include "worker/RunInChild.h"

namespace mapexport {

/// What became of one scene.
struct SceneResult {
  ExitStatus status = ExitStatus::kFailed;
  std::string error;  ///< why it failed, in one line
  std::string rule;   ///< of --depfile
  Remark exported = MakeNote("exported", "");
  std::string report;
  std::vector<std::string> sideFiles;     ///< that the scene was read from
  std::vector<std::string> dependencies;  ///< all that the output depends on, as far as known
  bool lacksFiles = false;                ///< it names files that were not found
  std::vector<RegistryChange> settings;   ///< to be remembered
};

/// Exports one scene, in its process, and reports to standard error. `settings` are those to start
/// from; the caller saves those of the result. Calls `computed` when all that is left is to put the
/// output in place. Once that begins, signals wait for the end of the process: an output that is in
/// its place is always in a result.
using ExportOne = std::function<SceneResult(
    const ExportArguments& arguments, SettingsStore settings, std::function<void()> computed)>;

/// The task of a child process in which `exportOne` runs. Its messages are collected.
ChildTask ExportTask(std::function<SceneResult()> exportOne);

/// The result of that task; `arguments` are those of its scene. Prints its messages, but not the
/// error, and removes what a child that crashed left behind.
SceneResult TakeResult(const ExportArguments& arguments, const ChildOutcome& outcome);

}  // namespace mapexport
