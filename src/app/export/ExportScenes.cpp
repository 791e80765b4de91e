#include "app/export/ExportScenes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <signal.h>

#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/WriteOutput.h"
#include "app/export/ExportSettings.h"
#include "app/export/ExportTargets.h"
#include "app/export/OptionsFile.h"
#include "app/export/RunReport.h"
#include "app/export/ScenesOptions.h"
#include "app/export/VerboseNotes.h"
#include "output/DepFile.h"
#include "output/OutputPlace.h"
#include "output/TakenFiles.h"
#include "system/Counted.h"
#include "system/RunError.h"
#include "system/StandardError.h"
#include "system/StandardOutput.h"
#include "worker/LimitProcess.h"
#include "worker/RunChildren.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using Job = ExportArguments::Job;
using std::chrono::steady_clock;

// Memory that an export takes at most, usually. Compressed scenes and side files can take more.
constexpr std::uint64_t kBaseMemory = std::uint64_t{64} << 20;
constexpr std::uint64_t kMemoryOfByte = 16;

std::uint64_t MemoryFor(const std::string& scene) {
  std::error_code unknown;
  const std::uintmax_t bytes = fs::file_size(scene, unknown);
  return unknown
             ? kBaseMemory
             : AddCounts(kBaseMemory, std::min(bytes, UINT64_MAX / kMemoryOfByte) * kMemoryOfByte);
}

/// One run of the command with several scenes.
class ScenesRun {
 public:
  ScenesRun(const CommandLine& line, const ExportArguments& arguments, const ExportOne& exportOne)
      : line_(line),
        arguments_(arguments),
        jobs_(arguments.jobs),
        exportOne_(exportOne),
        messages_(arguments.quiet),
        settings_(Prepare()) {}

  ExitStatus Run();

 private:
  /// Makes the folder and opens the settings.
  SettingsStore Prepare();
  /// Adds the files that the options of a scene name for reading.
  void AddInputsOf(const Job& job);
  /// Refuses outputs that are also read.
  void RequireFree();
  ChildTask TaskOf(const Job& job, std::function<void()> computed);
  void Take(std::size_t index, const ChildOutcome& outcome);
  SceneResult ResultOf(const Job& job, const ChildOutcome& outcome);
  void ShowProgress() const;
  void Summarise();
  void WriteReports(std::ostream& out) const;
  void WriteFiles();
  /// Remembers the options of the first scene that has some.
  void RememberOptions();

  std::size_t CountOf(ExitStatus status) const {
    return static_cast<std::size_t>(std::ranges::count(results_, status, &SceneResult::status));
  }
  std::size_t Exported() const { return ended_ - failed_; }

  const CommandLine& line_;
  const ExportArguments& arguments_;
  const std::vector<Job>& jobs_;
  const ExportOne& exportOne_;
  Messages messages_;
  const steady_clock::time_point start_ = steady_clock::now();
  TakenFiles inputs_;
  std::optional<OutputTarget> depFile_;
  std::optional<OutputTarget> report_;
  SettingsStore settings_;
  std::vector<SceneResult> results_;
  std::size_t ended_ = 0;
  std::size_t failed_ = 0;
};

SettingsStore ScenesRun::Prepare() {
  std::error_code error;
  fs::create_directories(*arguments_.outputFolder, error);
  if (error) {
    throw RunError(fmt::format("{}: the folder can't be made: {}", *arguments_.outputFolder,
                               ErrnoText(error.value())));
  }
  return OpenSettings(arguments_, messages_);
}

void ScenesRun::AddInputsOf(const Job& job) {
  inputs_.Add(job.scene, "scene");
  if (arguments_.fresh) return;
  const std::string optionsFile = FindOptionsFile(job.scene);
  if (optionsFile.empty()) return;
  inputs_.Add(optionsFile, kOptionsInput);
  try {
    inputs_.AddAll(NamedInputs(OwnArguments(line_, ArgumentsOf(arguments_, job))));
  } catch (const std::exception&) {
    // The export of that scene will report it.
  }
}

void ScenesRun::RequireFree() {
  inputs_ = NamedInputs(arguments_);
  for (const Job& job : jobs_) AddInputsOf(job);
  AddRememberedInputs(arguments_, settings_, inputs_);
  TakenFiles taken = inputs_;
  for (const Job& job : jobs_) {
    std::vector<std::string> files{job.output, job.log};
    if (arguments_.view) files.push_back(PagePath(job.output));
    for (const std::string& file : files) {
      taken.RequireFree({file, file, std::nullopt});
      taken.Add(file, "output for " + job.scene);
    }
    // Refuse names that no make rule can hold before the long work.
    if (arguments_.depFile) DepFileText(job.output, std::array{job.scene});
  }
  const auto find = [&taken](const std::optional<std::string>& path, const std::string& what) {
    std::optional<OutputTarget> target;
    if (!path) return target;
    target = FindOutput(*path);
    taken.RequireFree(*target);
    taken.Add(*path, what);
    return target;
  };
  depFile_ = find(arguments_.depFile, "file of --depfile");
  report_ = find(arguments_.report, "report");
}

ChildTask ScenesRun::TaskOf(const Job& job, std::function<void()> computed) {
  return ExportTask([this, &job, computed = std::move(computed)] {
    return exportOne_(ArgumentsOf(arguments_, job), std::move(settings_), computed);
  });
}

SceneResult ScenesRun::ResultOf(const Job& job, const ChildOutcome& outcome) {
  SceneResult result = TakeResult(ArgumentsOf(arguments_, job), outcome);
  if (arguments_.report && result.report.empty()) {
    RunReport report;
    report.error = result.error;
    report.scene = job.scene;
    report.output = job.output;
    std::ostringstream out;
    WriteReport(report, {}, {}, out);
    result.report = std::move(out).str();
  }
  return result;
}

void ScenesRun::Take(std::size_t index, const ChildOutcome& outcome) {
  const Job& job = jobs_[index];
  SceneResult result = ResultOf(job, outcome);
  Messages messages(arguments_.quiet, job.scene);
  if (result.status == ExitStatus::kFailed) {
    messages.Attribute({job.scene, job.output});
    messages.Error("failed", result.error);
    ++failed_;
  } else {
    messages.Tell(result.exported);
  }
  ++ended_;
  for (const std::string& file : result.sideFiles) inputs_.Add(file, kSideInput);
  results_[index] = std::move(result);
}

std::string TimeSince(steady_clock::time_point start) {
  const std::chrono::duration<double> time = steady_clock::now() - start;
  return fmt::format("{:.1f} s", time.count());
}

void ScenesRun::ShowProgress() const {
  if (arguments_.quiet || !StandardErrorIsTerminal()) return;
  const auto time = std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - start_);
  ShowStatusLine(fmt::format("exported {} of {} scenes{}, {} s", Exported(), jobs_.size(),
                             failed_ == 0 ? "" : fmt::format(", {} failed", failed_),
                             time.count()));
}

void ScenesRun::Summarise() {
  if (jobs_.size() == 1) return;
  constexpr std::size_t kMostNamed = 20;
  const std::size_t overlong = CountOf(ExitStatus::kOverlongLists);
  messages_.Note(
      "summary",
      fmt::format("{} of {} exported to {} in {}{}", Exported(), Counted(jobs_.size(), "scene"),
                  *arguments_.outputFolder, TimeSince(start_),
                  overlong == 0 ? "" : fmt::format(", {} with too long lists", overlong)));
  if (failed_ == 0) return;
  std::string names;
  std::size_t named = 0;
  for (std::size_t i = 0; i < jobs_.size(); ++i) {
    if (results_[i].status != ExitStatus::kFailed || ++named > kMostNamed) continue;
    names += fmt::format("{}{}", named == 1 ? "" : ", ", jobs_[i].scene);
  }
  if (named > kMostNamed) names += fmt::format(" and {} more", named - kMostNamed);
  messages_.Error("failed", fmt::format("{} of {} not exported: {}", failed_,
                                        Counted(jobs_.size(), "scene"), names));
}

void ScenesRun::WriteReports(std::ostream& out) const {
  out << R"({"format": "mapexport-report-list", "runs": [)";
  const char* separator = "\n";
  for (const SceneResult& result : results_) {
    std::string_view report = result.report;
    while (report.ends_with('\n')) report.remove_suffix(1);
    out << std::exchange(separator, ",\n") << report;
  }
  out << "\n]}\n";
}

void ScenesRun::WriteFiles() {
  std::vector<std::unique_ptr<OutputPlace>> made;
  const auto make = [&](const std::optional<OutputTarget>& target, const auto& write) {
    if (!target) return;
    inputs_.RequireFree(*target);
    if (target->isStandardOutput) return;
    made.push_back(std::make_unique<OutputPlace>(*target, write));
  };
  make(depFile_, [this](std::ostream& out) {
    for (const SceneResult& result : results_) out << result.rule;
  });
  make(report_, [this](std::ostream& out) { WriteReports(out); });
  if (report_ && report_->isStandardOutput) {
    PrintResult([this](std::ostream& out) { WriteReports(out); });
  }
  if (made.empty()) return;
  std::vector<OutputPlace*> places;
  places.reserve(made.size());
  for (const auto& place : made) places.push_back(place.get());
  OutputPlace::CommitTogether(places);
  TellPlaced(places, messages_, [] {});
}

void ScenesRun::RememberOptions() {
  const auto first = std::ranges::find_if(
      results_, [](const SceneResult& result) { return !result.settings.empty(); });
  if (first != results_.end()) SaveSettings(settings_, first->settings, messages_);
}

ExitStatus ScenesRun::Run() {
  if (arguments_.verbose) NoteVersions(messages_);
  RequireFree();
  results_.resize(jobs_.size());
  ChildrenTask tasks;
  tasks.count = jobs_.size();
  tasks.mostAtOnce = arguments_.mostAtOnce.value_or(ProcessorLimit());
  tasks.memory = FreeMemory();
  tasks.memoryOf = [this](std::size_t index) { return MemoryFor(jobs_[index].scene); };
  tasks.task = [this](std::size_t index, std::function<void()> computed) {
    return TaskOf(jobs_[index], std::move(computed));
  };
  tasks.ended = [this](std::size_t index, const ChildOutcome& outcome) { Take(index, outcome); };
  tasks.meanwhile = [this] { ShowProgress(); };
  const int signal = RunChildren(tasks);
  EraseStatusLine();
  RememberOptions();
  if (signal != 0) {
    messages_.Error(
        "failed",
        fmt::format(
            "stopped by a signal ({}): {} of {} exported; the other outputs are as they were",
            SignalText(signal), Exported(), Counted(jobs_.size(), "scene")));
    raise(signal);
    return ExitStatus::kFailed;  // the signal is blocked
  }
  Summarise();
  WriteFiles();
  if (failed_ > 0) return ExitStatus::kFailed;
  return CountOf(ExitStatus::kOverlongLists) > 0 ? ExitStatus::kOverlongLists : ExitStatus::kDone;
}

}  // namespace

ExitStatus ExportScenes(const CommandLine& line, const ExportArguments& arguments,
                        const ExportOne& exportOne) {
  return ScenesRun(line, arguments, exportOne).Run();
}

}  // namespace mapexport
