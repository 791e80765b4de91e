#include "app/export/ShowOptions.h"

#include <cerrno>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>
#include <unistd.h>

#include "app/export/CallExporter.h"
#include "app/export/EffectiveOptions.h"
#include "app/export/ExportSettings.h"
#include "app/export/ExportSystem.h"
#include "app/export/ExporterLog.h"
#include "modelreader/TextTable.h"
#include "output/TakenFiles.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

/// Cancels the dialog once the options of the command line are set.
class CancellingSystem : public ExportSystem {
 public:
  using ExportSystem::ExportSystem;
  void EndDialog(HWND dialog, int) override { ExportSystem::EndDialog(dialog, 0); }
};

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path().string() + "/mapexport-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw RunError(fmt::format("{}: {}", path_, ErrnoText(errno)));
    }
  }
  ~TemporaryFolder() { rmdir(path_.c_str()); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path() const { return path_ + "/"; }

 private:
  std::string path_;
};

/// What the dialog shows after these actions.
GivenOptions DialogOptions(const std::vector<DialogAction>& actions, SettingsStore& settings) {
  ConsoleSystem::Options options;
  options.actions = actions;
  Stages stages(true);
  ExporterLog log(std::nullopt, TakenFiles());
  CancellingSystem system(options, settings, stages, log);
  const TemporaryFolder folder;
  CallExporter(Scene(), 0, folder.Path(), "none.kob", system, log);
  return system.DialogValues().value_or(ExportSystem::Values()).options;
}

std::string ValueIn(const GivenOptions& options, const OptionInfo& option) {
  const auto found = options.find(option.name);
  if (found == options.end()) return option.kind == OptionKind::kFlag ? "off" : "-";
  return option.kind == OptionKind::kFlag ? "on" : found->second.back();
}

}  // namespace

ExitStatus ShowOptions(const ExportArguments& arguments, const OptionOrigins& origins,
                       Messages& messages) {
  SettingsStore fresh = SettingsStore::InMemory();
  const GivenOptions initial = DialogOptions({}, fresh);
  SettingsStore settings = OpenSettings(arguments, messages);
  const GivenOptions effective =
      EffectiveOptions(arguments.given, DialogOptions(arguments.actions, settings));

  const auto originOf = [&](const OptionInfo& option) -> std::string {
    const std::string value = ValueIn(effective, option);
    if (arguments.given.contains(option.name)) {
      const bool isOther =
          option.kind == OptionKind::kSwitch && value != ValueIn(arguments.given, option);
      if (isOther) return "\"Remove T-Vertices\", which keeps welding on";
      const auto origin = origins.find(option.name);
      return origin == origins.end() ? "command line" : origin->second;
    }
    if (option.control == 0 || value == ValueIn(initial, option)) return "initial value";
    return fmt::format("remembered in {}", SettingsPath(arguments));
  };
  TextTable table({{"option"}, {"value"}, {"from"}});
  for (const OptionInfo& option : ExportOptions()) {
    if (!ShapesOutput(option)) continue;
    table.AddRow({option.name, PrintableText(ValueIn(effective, option)),
                  PrintableText(originOf(option), std::string::npos)});
  }
  const bool arrived = PrintResult([&](std::ostream& out) { table.Write(0, out); });
  return arrived ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace mapexport
