#include "app/ExportCommand.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <ostream>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "app/ExporterTalk.h"
#include "app/FdOutput.h"
#include "app/LoadScene.h"
#include "app/Messages.h"
#include "app/ModelRemarks.h"
#include "app/Options.h"
#include "app/OutputPlace.h"
#include "app/PluginLibrary.h"
#include "app/RunError.h"
#include "console/ConsoleSystem.h"
#include "modelreader/ReadModelFile.h"
#include "scene/HostScene.h"
#include "settings/Descriptor.h"
#include "settings/SettingsStore.h"

namespace mapexport {
namespace {

/// The path that the exporter writes when it is given `path`: without a text after the last "." of
/// the whole path it appends ".map".
std::string ModelPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot + 1 != path.size();
  return hasExtension ? path : path + ".map";
}

SettingsStore OpenSettings(const ExportArguments& arguments, const Messages& messages) {
  if (arguments.fresh) return SettingsStore::InMemory();
  const std::string path = arguments.settings.value_or(SettingsStore::DefaultPath());
  if (path.empty()) {
    messages.Warning(
        "neither XDG_CONFIG_HOME nor HOME names a folder: the settings are not remembered");
    return SettingsStore::InMemory();
  }
  SettingsStore settings = SettingsStore::Open(path);
  if (!settings.Warning().empty()) messages.Warning(settings.Warning());
  return settings;
}

ConsoleSystem::Options SystemOptions(const ExportArguments& arguments, ExporterTalk& talk,
                                     const Messages& messages) {
  ConsoleSystem::Options options;
  options.actions = arguments.actions;
  options.tickCount = arguments.seed;
  options.onMessageBox = [&talk](const std::string& title, const std::string& text) {
    talk.HearMessageBox(title, text);
  };
  options.onDebugOutput = [&talk](const std::string& text) { talk.HearDebugOutput(text); };
  options.onCheckBoxAtEnd = [&arguments, &messages](int id, bool checked) {
    if (id == kWeldControl && checked && arguments.unweld) {
      messages.Warning(
          "--no-weld has no effect: welding stays on while \"Remove T-Vertices\" is set");
    }
  };
  return options;
}

/// Lets the exporter write the scene to `path`, as the host would.
void CallExporter(const Scene& scene, const std::string& path, System& system) {
  struct Installed {
    explicit Installed(System& system) { InstallSystem(&system); }
    ~Installed() { InstallSystem(nullptr); }
  };
  const Installed installed(system);
  const PluginLibrary library(PluginLibrary::Path());
  HostScene host(scene);
  ExpInterface enumeration;
  library.CreateExporter()->DoExport(path.c_str(), &enumeration, &host, false);
}

/// Why nothing more can be written to the end of the file at `path`, empty when something can.
std::string WriteTrouble(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (!file.IsOpen()) return ErrnoText(errno);
  FdOutput output(file.Get());
  std::ostream(&output) << std::string(65536, '\0');
  if (const int error = output.Finish(); error != 0) return ErrnoText(error);
  return fsync(file.Get()) == 0 ? "" : ErrnoText(errno);
}

/// Why the exporter, which does not look at errors of writing, left no sound file at `path`.
[[noreturn]] void ThrowNotExported(const std::string& output, const std::string& path,
                                   const std::string& reason) {
  const std::string trouble = WriteTrouble(path);
  if (!trouble.empty()) throw RunError(fmt::format("{}: cannot be written: {}", output, trouble));
  throw RunError(fmt::format("{}: not exported: {}", output, reason));
}

/// Checks what the exporter wrote to `path` and tells of what is remarkable in it.
ExitStatus CheckModel(const std::string& output, const std::string& path,
                      const Messages& messages) {
  const ModelReadResult read = ReadModelFile(path, LayoutOfPath(output));
  const auto error =
      std::ranges::find(read.problems, ModelSeverity::kError, &ModelProblem::severity);
  if (error != read.problems.end()) ThrowNotExported(output, path, ToLine(*error));
  return WarnOfModel(read, output, messages);
}

}  // namespace

ExitStatus RunExportCommand(const ExportArguments& arguments) {
  const Messages messages(arguments.quiet);
  // Where ".map" is appended, a folder or device of the given name is a mistake all the same.
  RequireRegularFileOrNothing(arguments.output);
  const std::string output = ModelPath(arguments.output);
  const OutputTarget target = FindOutput(output);
  std::error_code missing;
  if (std::filesystem::equivalent(arguments.scene, target.path, missing)) {
    throw RunError(fmt::format("{}: cannot be written: it is the scene itself", output));
  }
  const Scene scene = LoadScene(arguments.scene, messages);
  SettingsStore settings = OpenSettings(arguments, messages);

  // The exporter is given the person's own file name in the temporary folder and appends ".map"
  // itself where it would have. Only behind a link whose folder has a dot in its path does it judge
  // differently; the folder's own name has none, so another such name tells beforehand.
  const std::string givenName = NamePart(arguments.output);
  OutputPlace place(target, NamePart(ModelPath(FolderPart(target.path) + "folder/" + givenName)));
  ExporterTalk talk(messages);
  ConsoleSystem system(SystemOptions(arguments, talk, messages), settings);
  CallExporter(scene, place.Folder() + givenName, system);
  talk.PrintCounts();
  if (!talk.Exception().empty()) {
    throw RunError(fmt::format("{}: not exported: {}", output, talk.Exception()));
  }
  if (const std::string error = settings.Save(); !error.empty()) messages.Warning(error);

  if (!talk.Succeeded()) {
    ThrowNotExported(output, place.File(), "the exporter could not open its file");
  }
  const ExitStatus status = CheckModel(output, place.File(), messages);
  if (const std::string warning = place.Commit(); !warning.empty()) messages.Warning(warning);
  talk.PrintSuccess();
  return status;
}

}  // namespace mapexport
