// The state of the export of one scene.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/Stages.h"
#include "app/WindowLibrary.h"
#include "app/export/CallExporter.h"
#include "app/export/ExportArguments.h"
#include "app/export/ExportTargets.h"
#include "app/export/RecordedRun.h"
#include "app/export/ReportOutput.h"
#include "app/export/RunReport.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "settings/SettingsStore.h"
#include "system/Remark.h"

namespace mapexport {

/// The export of one scene.
struct ExportRun {
  /// `repeatedRun` is null, or the run that this one repeats.
  ExportRun(const ExportArguments& given, const RecordedRun* repeatedRun)
      : arguments(given),
        repeated(repeatedRun),
        messages(given.quiet, given.scene.path),
        stages(given.quiet),
        inputs(NamedInputs(given)),
        reportOutput(FindReportTarget(given, inputs), [this](std::ostream& out) {
          WriteReport(report, messages.Told(), stages.Times(), out);
        }) {
    report.scene = given.scene.path;
    report.output = ModelPath(given.output);
    report.seed = given.seed.value_or(ClockSeed());
  }
  ExportRun(const ExportRun&) = delete;
  ExportRun& operator=(const ExportRun&) = delete;

  const ExportArguments& arguments;
  const RecordedRun* repeated;
  Messages messages;
  Stages stages;
  RunReport report;
  TakenFiles inputs;  ///< files that are read, as far as known
  std::vector<std::string> shapingFiles;
  std::optional<OutputTarget> page;  ///< of --view
  ReportOutput reportOutput;
  std::unique_ptr<Presenter> windows;  ///< null without --dialog
  std::optional<SettingsStore> settings;
  /// Gets the checked model instead of putting it and other files in place; may be empty.
  std::function<void(const OutputPlace& model)> useAside;
  std::function<void()> computed;  ///< called before files are put in place; may be empty
  /// For several scenes or --watch: what belongs into a SceneResult.
  bool isForCaller = false;
  std::vector<RegistryChange> changedSettings;
  std::vector<std::string> sideFiles;          ///< of the scene
  std::string rule;                            ///< of --depfile, if it is wanted
  Remark exported = MakeNote("exported", "");  ///< what the output is, once it is in its place
};

}  // namespace mapexport
