// The command `export`.
#include <array>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "app/Commands.h"
#include "app/LoadScene.h"
#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/Stages.h"
#include "app/WindowLibrary.h"
#include "app/WriteOutput.h"
#include "app/export/CallExporter.h"
#include "app/export/CheckExport.h"
#include "app/export/EffectiveOptions.h"
#include "app/export/ExportArguments.h"
#include "app/export/ExportAside.h"
#include "app/export/ExportRemarks.h"
#include "app/export/ExportRun.h"
#include "app/export/ExportScenes.h"
#include "app/export/ExportSettings.h"
#include "app/export/ExportSystem.h"
#include "app/export/ExportTargets.h"
#include "app/export/ExporterLog.h"
#include "app/export/ExporterTalk.h"
#include "app/export/ModelRemarks.h"
#include "app/export/RecordedRun.h"
#include "app/export/ReportOutput.h"
#include "app/export/RunReport.h"
#include "app/export/ScenesOptions.h"
#include "app/export/ShowOptions.h"
#include "app/export/VerboseNotes.h"
#include "app/export/WatchExport.h"
#include "app/textures/CopyTextures.h"
#include "app/textures/FindTextures.h"
#include "cli/CommandLine.h"
#include "output/DepFile.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "output/Sha256.h"
#include "output/TakenFiles.h"
#include "settings/SettingsStore.h"
#include "system/FileIdentity.h"
#include "system/HoldInterrupts.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

void ShowStatus(ExportRun& run, const std::string& status) {
  if (run.windows) run.windows->ShowStatus(status + run.messages.WarningParagraphs());
}

ExporterTalk::ShowBox BoxesOf(ExportRun& run) {
  if (!run.windows) return {};
  return [&run](const std::string& title, const std::string& text) {
    run.stages.During("dialog", [&] { run.windows->ShowMessageBox(title, text); });
  };
}

ConsoleSystem::Options SystemOptions(const ExportRun& run, ExporterTalk& talk) {
  ConsoleSystem::Options options;
  options.actions = run.arguments.actions;
  options.presenter = run.windows.get();
  options.tickCount = run.report.seed;
  options.onMessageBox = [&talk](const std::string& title, const std::string& text) {
    talk.HearMessageBox(title, text);
  };
  options.onDebugOutput = [&talk](const std::string& text) { talk.HearDebugOutput(text); };
  return options;
}

void HashFiles(ExportRun& run, const OutputPlace& model) {
  RunReport& report = run.report;
  report.inputs = HashInputs(run.shapingFiles);
  report.sha256 = Sha256OfFile(model.File());
  if (run.repeated != nullptr) {
    RequireSameResult(*run.repeated, report.inputs, report.output, report.sha256);
  }
}

/// Puts the checked output and its companion files in place, all of them or none, then calls
/// `tellMore`.
template <typename TellMore>
void PutInPlace(ExportRun& run, OutputPlace& model, const std::optional<OutputTarget>& depFile,
                const TellMore& tellMore) {
  std::unique_ptr<OutputPlace> depFilePlace;
  std::unique_ptr<OutputPlace> pagePlace;
  if (run.arguments.makesRule) {
    run.rule = DepFileText(run.report.output, run.report.dependencies);
  }
  if (depFile) {
    depFilePlace =
        std::make_unique<OutputPlace>(*depFile, [&run](std::ostream& out) { out << run.rule; });
  }
  if (run.page) pagePlace = MakePage(*run.page, model, run.report);
  run.report.bytes = std::filesystem::file_size(model.File());
  if (run.arguments.makesReport || run.repeated != nullptr) HashFiles(run, model);
  const std::unique_ptr<OutputPlace> reportPlace = run.reportOutput.Prepare();
  std::vector<OutputPlace*> places{&model};
  for (OutputPlace* const place : {depFilePlace.get(), pagePlace.get(), reportPlace.get()}) {
    if (place != nullptr) places.push_back(place);
  }
  // Print the report before placing: a report that can't be printed must not replace an older
  // output, and placing hardly ever fails.
  run.reportOutput.Print();
  if (run.computed) run.computed();
  OutputPlace::CommitTogether(places, [&run] {
    // Its process ends after the hand-over.
    if (run.isForCaller) static const HoldInterrupts untilTheEnd;
  });
  TellPlaced(places, run.messages, tellMore);
}

/// The place of a model that never gets there.
OutputTarget AsideTarget(const ExportArguments& arguments) {
  return {"the model of " + arguments.scene.path, arguments.output, std::nullopt, false};
}

/// Refuses outputs that are also read.
void RequireFree(ExportRun& run, const OutputTarget& model,
                 const std::optional<OutputTarget>& depFile) {
  run.reportOutput.RequireFree(run.inputs);  // first: it must not report its own refusal there
  run.inputs.RequireFree(model);
  if (depFile) run.inputs.RequireFree(*depFile);
  if (run.page) run.inputs.RequireFree(*run.page);
}

/// The files that the log must not replace.
TakenFiles TakenBesideLog(const ExportRun& run, const OutputTarget& model) {
  TakenFiles taken = run.inputs;
  taken.Add(model.path, "output");
  if (run.arguments.depFile) taken.Add(*run.arguments.depFile, "file of --depfile");
  if (run.page) taken.Add(run.page->path, "page");
  if (const auto& report = run.reportOutput.Target()) taken.Add(report->path, "report");
  return taken;
}

/// Adds the textures that were found to the files that the run reads. Returns those to copy.
std::vector<TextureCopy> TakeTextures(ExportRun& run, const OutputTarget& model,
                                      const std::optional<OutputTarget>& depFile) {
  for (const TextureUse& use : run.report.textures) {
    if (!use.file) continue;
    run.inputs.Add(use.file->path, "texture");
    run.report.dependencies.push_back(use.file->path);
  }
  RequireFree(run, model, depFile);
  if (!run.arguments.copyTextures) return {};
  return PlanTextureCopies(*run.arguments.copyTextures, run.report.textures,
                           TakenBesideLog(run, model), run.messages);
}

void ReportCancel(ExportRun& run) {
  run.stages.End();
  run.report.status = ExitStatus::kCancelled;
  run.messages.Note("cancelled",
                    fmt::format("{}: not exported: cancelled in the dialog", run.report.output));
  run.reportOutput.Deliver(run.messages);
}

void Export(ExportRun& run) {
  const ExportArguments& arguments = run.arguments;
  const std::string& output = run.report.output;
  if (arguments.verbose && !run.isForCaller) NoteVersions(run.messages);
  const OutputTarget target =
      run.useAside ? AsideTarget(arguments) : FindModelTarget(arguments, run.inputs);
  // Messages about a model that is made aside name its scene, but a full disk is that of its file.
  const std::string& written = run.useAside ? target.name : output;
  const std::optional<OutputTarget> depFile = FindDepFileTarget(arguments, run.inputs);
  if (!run.page) run.page = FindPageTarget(arguments, run.inputs);
  if (!run.settings) run.settings = OpenSettings(arguments, run.messages);
  SettingsStore& settings = *run.settings;
  AddRememberedInputs(arguments, settings, run.inputs);
  RequireFree(run, target, depFile);
  // Refuse names that no make rule can hold before the long work.
  if (arguments.makesRule) DepFileText(output, std::array{arguments.scene.path});
  if (run.repeated != nullptr) RequireSameInputs(*run.repeated, output);
  RequireTextureFolders(arguments.textures);
  // Reading may take long: report a missing display before it.
  if (arguments.dialog) RequireWindows();
  LoadedScene loaded = LoadScene(arguments.scene, run.messages, run.stages);
  if (arguments.verbose) NoteUnit(arguments.scene.path, run.messages);
  run.report.confinement = std::move(loaded.confinement);
  for (const std::string& file : loaded.sideFiles) run.inputs.Add(file, kSideInput);
  run.sideFiles = loaded.sideFiles;
  RequireFree(run, target, depFile);
  run.report.leftOut = std::move(loaded.leftOut);
  run.report.before = CountScene(loaded.scene);
  RemarkOnCensus(*run.report.before, arguments.scene.path, run.messages);
  const std::string sceneName = NamePart(arguments.scene.path);
  if (arguments.dialog) run.windows = OpenWindows("mapexport - " + sceneName);
  ShowStatus(run, "Exporting " + sceneName);

  // The exporter gets the user's file name in the temporary folder, and appends ".map" itself
  // unless that whole path has an extension. Behind a link whose folder has a dot in its path the
  // result can differ from the user's path. The temporary folder's name has no dot, so "folder"
  // stands in for it here.
  const std::string givenName = NamePart(arguments.output);
  OutputPlace place(target, NamePart(ModelPath(FolderPart(target.path) + "folder/" + givenName)));
  ExporterLog log(arguments.noLog ? std::nullopt : std::optional(LogPath(arguments)),
                  TakenBesideLog(run, target));
  ExporterTalk talk(run.messages, log, BoxesOf(run));
  ExportSystem system(SystemOptions(run, talk), settings, run.stages, log);
  run.stages.Begin("exporting");
  CallExporter(loaded.scene, arguments.longestList, place.Folder(), givenName, system, log);
  const SceneTextures textures = TexturesOf(loaded.scene, arguments);
  loaded.scene = {};  // free memory for the check
  const ExportSystem::Values values = system.DialogValues().value_or(ExportSystem::Values());
  if (system.DialogValues()) {
    run.report.options = EffectiveOptions(arguments.given, values.options);
  }
  AddCxp(values.cxp, run.inputs);
  log.Place(TakenBesideLog(run, target), run.messages);
  RequireFree(run, target, depFile);
  talk.PrintCounts();
  if (!talk.Exception().empty()) {
    throw RunError(fmt::format("{}: not exported: {}", output, talk.Exception()));
  }
  if (!system.Cancelled()) WarnOfWelding(arguments, values, *run.report.before, run.messages);
  run.changedSettings = settings.Changes();
  if (!run.isForCaller) SaveSettings(settings, run.messages);
  if (system.Cancelled()) return ReportCancel(run);
  if (!talk.Succeeded()) {
    ThrowNotExported(written, place.File(), "the exporter could not open its file");
  }

  run.stages.Begin("checking");
  ShowStatus(run, "Checking " + NamePart(output));
  const ModelCheckResult checked = CheckExport(written, place.File());
  run.report.status =
      WarnOfModel(checked.problems, checked.lengths, output, &*run.report.before, run.messages);
  run.report.layout = checked.lengths.layout;
  run.report.after = CountModel(checked.lengths);
  RemarkOnExport(run.report, values, talk, run.messages);
  run.shapingFiles = ShapingFiles(arguments, std::move(loaded.sideFiles),
                                  talk.CxpFailed() ? std::string() : values.cxp);
  run.report.dependencies = Dependencies(arguments, run.shapingFiles);
  run.report.textures = FindTextures(GroupByTexture(checked.lengths.texturedMaterials), textures,
                                     arguments, run.messages);
  const std::vector<TextureCopy> copies = TakeTextures(run, target, depFile);
  run.stages.End();
  if (arguments.verbose) NoteTimes(run.stages, run.messages);
  if (run.useAside) return run.useAside(place);
  RequireNoWarning(arguments, output, run.messages.Told());
  CopyTextures(copies, run.messages);
  // Other exports may have copied other files of the same names meanwhile.
  RequireNoWarning(arguments, output, run.messages.Told());
  PutInPlace(run, place, depFile, [&] {
    ShowStatus(run, "Exported " + sceneName);
    talk.TellSuccess();
    run.exported = ExportedNote(run.report);
    if (!run.isForCaller) run.messages.Tell(run.exported);
  });
}

void ReportFailure(ExportRun& run, const std::string& reason) {
  run.stages.End();
  run.report.status = ExitStatus::kFailed;
  run.report.error = reason;
  run.report.sha256.clear();
  try {
    run.reportOutput.Deliver(run.messages);
  } catch (const std::exception& error) {
    // The error to report is the one that ended the export.
    run.messages.Warning("report-not-written", ReasonOf(error));
  }
}

/// Exports for several scenes or --watch; `shared` are the arguments without mapexport.toml. Throws
/// nothing but std::bad_alloc.
SceneResult ExportForCaller(const CommandLine& line, const ExportArguments& shared,
                            SettingsStore settings, std::function<void()> computed) {
  ExportArguments arguments = shared;
  std::string wrongOptions;
  try {
    arguments = OwnArguments(line, shared);
  } catch (const std::exception& error) {
    wrongOptions = ReasonOf(error);
  }
  ExportRun run(arguments, nullptr);
  run.messages.Attribute({run.report.scene, run.report.output});
  run.settings = std::move(settings);
  run.computed = std::move(computed);
  run.isForCaller = true;
  try {
    if (!wrongOptions.empty()) throw RunError(wrongOptions);
    Export(run);
  } catch (const std::exception& error) {
    ReportFailure(run, ReasonOf(error));
  }
  SceneResult result;
  result.status = run.report.status;
  result.error = run.report.error;
  result.rule = run.rule;
  result.exported = run.exported;
  result.settings = std::move(run.changedSettings);
  for (const Remark& remark : run.messages.Told()) {
    result.lacksFiles = result.lacksFiles || remark.code.starts_with("missing-");
  }
  result.dependencies =
      run.report.dependencies.empty() ? ShapingFiles(arguments, {}, "") : run.report.dependencies;
  if (arguments.makesReport) {
    std::ostringstream report;
    WriteReport(run.report, run.messages.Told(), run.stages.Times(), report);
    result.report = std::move(report).str();
  }
  result.sideFiles = std::move(run.sideFiles);
  return result;
}

/// Exports a scene with the options of the command line, or with the dialog. The output is checked
/// before it is put in place; on any failure an older output stays as it was.
ExitStatus Run(const CommandLine& line) {
  const std::optional<RecordedRun> recorded = FindRecordedRun(line);
  CommandLine whole = recorded ? RepeatingLine(line, *recorded) : line;
  const ExportOne exportOne = std::bind_front(ExportForCaller, std::cref(line));
  const bool showsOptions = line.Has("show-options");
  if (line.Has("output-folder")) {
    for (const char* option : {"show-options", "watch"}) {
      if (!line.Has(option)) continue;
      throw UsageError(fmt::format("--{} and --output-folder exclude each other", option),
                       line.command);
    }
    return ExportScenes(line, ReadExportArguments(line), exportOne);
  }
  OptionOrigins origins;
  if (recorded) {
    for (const auto& [name, values] : recorded->options) origins[name] = recorded->report;
  }
  const std::optional<std::string> optionsFile = AddFileOptions(whole, origins);
  if (showsOptions && whole.positionals.size() == 1) whole.positionals.emplace_back("none");
  ExportArguments arguments = ReadExportArguments(whole);
  arguments.optionsFile = optionsFile;
  if (showsOptions) {
    Messages messages(arguments.quiet, arguments.scene.path);
    return ShowOptions(arguments, origins, messages);
  }
  if (arguments.watch) return WatchExport(line, arguments, exportOne);
  ExportRun run(arguments, recorded ? &*recorded : nullptr);
  try {
    Export(run);
  } catch (const std::exception& error) {
    ReportFailure(run, ReasonOf(error));
    run.messages.Error("failed", ReasonOf(error));
  }
  return run.report.status;
}

}  // namespace

ExitStatus ExportAside(CommandLine line, const OutputTarget& taken, const UseAside& use) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) throw RunError("TMPDIR, the temporary folder: " + ErrnoText(error.value()));
  line.positionals.push_back(folder / "model.kob");
  for (const char* const flag : {"no-log", "quiet"}) line.options.try_emplace(flag, 1);
  OptionOrigins origins;
  const std::optional<std::string> optionsFile = AddFileOptions(line, origins);
  ExportArguments arguments = ReadExportArguments(line);
  arguments.optionsFile = optionsFile;
  ExportRun run(arguments, nullptr);
  run.report.output = run.report.scene;  // what messages name
  run.page = taken;
  run.isForCaller = true;  // which saves no settings
  run.useAside = [&](const OutputPlace& model) { use(model.File(), run.report); };
  Export(run);
  return run.report.status;
}

CommandInfo ExportCommand() {
  return {.name = "export",
          .summary = "exports a scene to a model file",
          .positionals = ExportPositionals(),
          .otherForm = "SCENE... --output-folder DIR",
          .options = ExportOptions(),
          .run = Run};
}

}  // namespace mapexport
