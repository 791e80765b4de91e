// The command `view`.
#include <array>
#include <optional>
#include <ostream>
#include <string>

#include "app/Commands.h"
#include "app/LoadModel.h"
#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/WriteOutput.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{kModelPositional};
constexpr OptionInfo kCoordinates{
    .name = "coordinates",
    .kind = OptionKind::kRow,
    .argument = "SYSTEM",
    .help =
        "the coordinate system that the file was exported with, left-handed unless given; "
        "the page shows the level upright by it",
    .rows = kCoordinateSystems};
constexpr std::array kOptions{
    OptionInfo{
        .name = "output",
        .kind = OptionKind::kText,
        .argument = "FILE",
        .help =
            "the page to write; without it, FILE.html beside the model file; \"-\": to standard "
            "output",
        .letter = 'o'},
    kLayoutOption,
    kCoordinates,
};

struct ViewArguments {
  std::string file;
  std::optional<std::string> output;
  std::optional<ModelLayout> layout;
  int coordinateSystem = 0;  ///< 0 to 3
};

/// Writes an HTML page that shows a model file; defects of the file go to standard error. Throws
/// RunError also when this program was built without the page.
ExitStatus Run(const CommandLine& line) {
  const ViewArguments arguments{.file = PositionalPath(line, 0),
                                .output = PathValue(line, "output"),
                                .layout = LayoutValue(line),
                                .coordinateSystem = RowValue(line, kCoordinates).value_or(0)};
  RequirePageBuilt("view");
  Messages messages(false);
  const std::string output = arguments.output.value_or(PagePath(arguments.file));
  const OutputTarget target = FindOutput(output);
  TakenFiles inputs;
  inputs.Add(arguments.file, "model file");
  inputs.RequireFree(target);
  const std::optional<LoadedModel> loaded = LoadModel(arguments.file, arguments.layout, messages);
  if (!loaded) return ExitStatus::kFailed;
  const auto write = PageWriter(loaded->model, arguments.file, arguments.coordinateSystem);
  if (!WriteOutput(target, write, messages)) return ExitStatus::kFailed;
  if (target.isStandardOutput) return loaded->status;
  try {
    PrintResult([&](std::ostream& out) {
      out << "wrote " << PrintableText(output, std::string::npos) << '\n';
    });
  } catch (const RunError& error) {
    messages.Warning("not-told", error.what());  // the page is in its place nevertheless
  }
  return loaded->status;
}

}  // namespace

CommandInfo ViewCommand() {
  return {.name = "view",
          .summary = "writes an HTML page that shows a model file in 3D",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
