#include "app/export/WatchExport.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <exception>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/export/ExportSettings.h"
#include "app/export/ExportTargets.h"
#include "app/export/OptionsFile.h"
#include "app/export/VerboseNotes.h"
#include "output/OutputTarget.h"
#include "scene/FileText.h"
#include "system/FileIdentity.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"
#include "view/ServedPage.h"
#include "watch/PageServer.h"
#include "watch/WatchedFiles.h"
#include "worker/HandOver.h"
#include "worker/SignalQueue.h"

namespace mapexport {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A burst of changes is one: files count as written once they stay the same that long.
constexpr milliseconds kQuiet{100};
/// Files are looked at that often without an alarm, which network file systems don't give.
constexpr milliseconds kLookEvery{1000};

void RequireWatchable(const CommandLine& line, const ExportArguments& arguments) {
  for (const char* option : {"dialog", "output-folder", "repeat"}) {
    if (!line.Has(option)) continue;
    throw UsageError(fmt::format("--watch and --{} exclude each other", option), line.command);
  }
  if (arguments.report && IsStandardOutput(*arguments.report)) {
    throw UsageError("--watch: the report can't go to standard output; name a file", line.command);
  }
  const std::string& scene = arguments.scene.path;
  struct stat info {};
  const bool exists = stat(scene.c_str(), &info) == 0;
  if (exists ? !S_ISREG(info.st_mode) : scene == "-") {
    throw RunError(scene +
                   ": can't be watched: it is no file that a program replaces or writes to");
  }
  // What can't be written now is a mistake, not a reason to wait.
  const TakenFiles inputs = NamedInputs(arguments);
  FindModelTarget(arguments, inputs);
  FindDepFileTarget(arguments, inputs);
  FindPageTarget(arguments, inputs);
  FindReportTarget(arguments, inputs);
}

class Watch {
 public:
  Watch(const ExportArguments& given, const ExportOne& exportOne)
      : arguments_(given),
        exportOne_(exportOne),
        messages_(given.quiet, given.scene.path),
        settings_(OpenSettings(given, messages_)) {
    arguments_.quiet = !given.verbose;  // one line per export
    if (given.verbose) NoteVersions(messages_);
    FindNamedFiles();
    if (!given.view) return;
    server_.emplace();
    PrintResult([this](std::ostream& out) { out << "page: " << server_->Url() << '\n'; });
  }

  /// Returns the signal that ended it.
  int Run() {
    for (;;) {
      if (const int signal = Export()) return signal;
      if (const int signal = AwaitChange()) return signal;
    }
  }

 private:
  /// The watched files as they are at a time.
  struct Look {
    std::map<std::string, FileState> files;
    /// In the folders where a file that is lacking may appear.
    std::map<std::string, FileState> others;

    friend bool operator==(const Look&, const Look&) = default;
  };

  void FindNamedFiles();
  Look LookNow() const;
  /// Once an export has told what it reads, their states don't matter.
  std::map<std::string, FileState> OtherFiles() const;
  /// Both return the signal that is to end the program, or 0.
  int Export();
  int AwaitChange();
  ChildTask TaskNow();
  void Take(SceneResult result, std::int64_t started);
  void ServePage();
  /// Waits at most that long for a signal or `alarm`, and serves meanwhile. Returns the signal.
  int Wait(milliseconds most, const FolderAlarm* alarm);

  ExportArguments arguments_;
  const ExportOne& exportOne_;
  Messages messages_;
  SettingsStore settings_;
  bool savedSettings_ = false;
  SignalQueue signals_;
  std::optional<PageServer> server_;
  int pages_ = 0;
  std::set<std::string> named_;    ///< by the command line or the settings
  std::set<std::string> watched_;  ///< these, and what the last exports read
  /// Where a mapexport.toml may be. Nobody waits for alarms there: folders such as /tmp have many.
  std::set<std::string> optionsFiles_;
  std::set<std::string> folders_;  ///< where files that are lacking may appear
  std::set<std::string> outputs_;  ///< names
  bool lacksFiles_ = false;        ///< the last export lacked some
  bool hasExported_ = false;
  Look exported_;
};

void Watch::FindNamedFiles() {
  named_.insert(arguments_.scene.path);
  if (arguments_.scene.keywords) named_.insert(*arguments_.scene.keywords);
  std::string cxp = RememberedCxp(settings_);
  for (const DialogAction& action : arguments_.actions) {
    if (const auto* const picked = std::get_if<PickFile>(&action)) cxp = picked->path;
  }
  if (!cxp.empty()) named_.insert(cxp);
  watched_ = named_;
  if (!arguments_.fresh) {
    const std::vector<std::string> places = OptionsFilePlaces(arguments_.scene.path);
    optionsFiles_.insert(places.begin(), places.end());
  }
  folders_.insert(FolderOf(arguments_.scene.path));
  folders_.insert(arguments_.textures.begin(), arguments_.textures.end());
  const std::string model = ModelPath(arguments_.output);
  for (const std::string& file :
       {model, PagePath(model), LogPath(arguments_), arguments_.depFile.value_or(""),
        arguments_.report.value_or(""), SettingsPath(arguments_)}) {
    outputs_.insert(NamePart(file));
  }
}

std::map<std::string, FileState> Watch::OtherFiles() const {
  std::map<std::string, FileState> files;
  for (const std::string& folder : folders_) {
    for (const std::string& name : FilesIn(folder)) {
      if (name.starts_with('.') || outputs_.contains(name)) continue;
      const std::string path = fmt::format("{}/{}", folder, name);
      files[path] = hasExported_ ? FileState{} : StateOf(path);
    }
  }
  return files;
}

Watch::Look Watch::LookNow() const {
  Look look;
  for (const std::string& path : watched_) look.files[path] = StateOf(path);
  for (const std::string& path : optionsFiles_) look.files[path] = StateOf(path);
  if (lacksFiles_) look.others = OtherFiles();
  return look;
}

ChildTask Watch::TaskNow() {
  return ExportTask([this] {
    if (server_) server_->Abandon();
    return exportOne_(arguments_, std::move(settings_), {});
  });
}

int Watch::Export() {
  const std::int64_t started = FileTimeNow();
  exported_ = LookNow();
  exported_.others = OtherFiles();
  ChildOutcome outcome{ChildEnd::kCannotHandOver, 0, {}, {}, {}};
  try {
    RunningChild child(TaskNow());
    for (std::optional<ChildOutcome> end; !end;) {
      if (const int signal = Wait(kLookEvery, nullptr)) {
        kill(child.Id(), signal);
        child.Wait();
        return signal;
      }
      if ((end = child.Poll())) outcome = std::move(*end);
    }
  } catch (const ChildError& error) {
    outcome.message = error.what();
  }
  Take(TakeResult(arguments_, outcome), started);
  return 0;
}

void Watch::Take(SceneResult result, std::int64_t started) {
  const std::string time = fmt::format("{:%H:%M:%S}", fmt::localtime(std::time(nullptr)));
  if (!savedSettings_ && !result.settings.empty()) {
    SaveSettings(settings_, result.settings, messages_);
    savedSettings_ = true;
  }
  const bool failed = result.status == ExitStatus::kFailed;
  if (failed) {
    messages_.Error("failed", fmt::format("{} {}", time, result.error));
  } else {
    result.exported.text = fmt::format("{} {}", time, result.exported.text);
    messages_.Tell(result.exported);
  }
  lacksFiles_ = failed || result.lacksFiles;
  if (!failed) {
    watched_ = named_;
    hasExported_ = true;
    for (auto& [path, state] : exported_.others) state = {};
  }
  if (!lacksFiles_) exported_.others.clear();
  for (const auto* files : {&result.sideFiles, &result.dependencies}) {
    for (const std::string& file : *files) {
      // The settings are those of the beginning, and every export may write them.
      if (file == arguments_.settings) continue;
      watched_.insert(file);
      if (exported_.files.contains(file)) continue;
      const FileState state = StateOf(file);
      // What was written since may not be what was read: such a file counts as changed.
      if (state.placed < started) exported_.files[file] = state;
    }
  }
  std::erase_if(exported_.files, [this](const auto& file) {
    return !watched_.contains(file.first) && !optionsFiles_.contains(file.first);
  });
  if (!failed && server_) ServePage();
}

void Watch::ServePage() {
  const std::string path = PagePath(ModelPath(arguments_.output));
  try {
    const std::string version = fmt::format("{}-{}", getpid(), ++pages_);
    auto page = ServedPage(std::string(FileText(path).View()), version);
    if (!page) throw RunError(path + ": is not served: another program has changed it");
    server_->SetPage(std::move(*page), version);
  } catch (const std::exception& error) {
    messages_.Error("failed", ReasonOf(error));
  }
}

int Watch::AwaitChange() {
  const FolderAlarm alarm([this] {
    std::set<std::string> paths = watched_;
    if (lacksFiles_) {
      for (const std::string& folder : folders_) paths.insert(folder + "/.");
    }
    return paths;
  }());
  Look last = exported_;
  auto quietAt = steady_clock::time_point::max();
  for (;;) {
    alarm.Reset();
    const auto now = steady_clock::now();
    if (Look look = LookNow(); look != last) {
      last = std::move(look);
      quietAt = last == exported_ ? steady_clock::time_point::max() : now + kQuiet;
    } else if (now >= quietAt) {
      return 0;
    }
    const bool isQuiet = quietAt == steady_clock::time_point::max();
    const milliseconds most = isQuiet ? kLookEvery : std::chrono::ceil<milliseconds>(quietAt - now);
    if (const int signal = Wait(most, &alarm)) return signal;
  }
}

int Watch::Wait(milliseconds most, const FolderAlarm* alarm) {
  std::vector<pollfd> descriptors{{signals_.Get(), POLLIN, 0}};
  if (alarm != nullptr) descriptors.push_back({alarm->Get(), POLLIN, 0});
  const std::size_t own = descriptors.size();
  const auto end = steady_clock::now() + most;
  for (;;) {
    descriptors.resize(own);
    if (server_) server_->AddTo(descriptors);
    const auto rest = std::chrono::ceil<milliseconds>(end - steady_clock::now());
    poll(descriptors.data(), descriptors.size(),
         static_cast<int>(std::max(rest, milliseconds(0)).count()));
    if (server_) server_->Serve();
    const int signal = signals_.Next(milliseconds(0));
    if (signal == SIGCHLD) return 0;
    if (signal != 0) return signal;
    if (rest.count() <= 0 || (alarm != nullptr && (descriptors[1].revents & POLLIN) != 0)) return 0;
  }
}

}  // namespace

ExitStatus WatchExport(const CommandLine& line, const ExportArguments& arguments,
                       const ExportOne& exportOne) {
  RequireWatchable(line, arguments);
  const int signal = Watch(arguments, exportOne).Run();
  raise(signal);
  return ExitStatus::kFailed;  // the signal is blocked
}

}  // namespace mapexport
