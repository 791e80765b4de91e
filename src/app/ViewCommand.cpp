// The command `view`.
#include <algorithm>
#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "app/Commands.h"
#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/ShownModel.h"
#include "app/WriteOutput.h"
#include "app/textures/ReadTextures.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "system/DistinctNames.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{kShownPositional};
constexpr std::array kOwnOptions{
    OptionInfo{
        .name = "output",
        .kind = OptionKind::kText,
        .argument = "FILE",
        .help =
            "the page to write; without it, FILE.html beside the model file; \"-\": to standard "
            "output",
        .letter = 'o'},
    OptionInfo{.name = "compare",
               .kind = OptionKind::kText,
               .argument = "FILE",
               .help =
                   "a newer model file or scene: the page shows both, what only one of them has in "
                   "colour, and what `diff` says of them"},
    kTexturesOption,
};

struct ViewArguments {
  std::string file;
  std::optional<std::string> output;
  std::optional<std::string> newer;   ///< the file of --compare
  std::vector<std::string> textures;  ///< folders
};

/// Of the model's textures what the page shows; nothing without --textures.
decltype(ViewInfo::textures) TexturesToShow(const ViewArguments& arguments, const ModelFile& model,
                                            const OutputTarget& target, Messages& messages) {
  if (arguments.textures.empty()) return {};
  TakenFiles inputs;
  auto images = ReadTextures(model, arguments.file, arguments.textures, inputs, messages);
  inputs.RequireFree(target);
  return PageTextures(std::move(images));
}

/// Writes an HTML page that shows a model file; defects of the file go to standard error. Throws
/// RunError also when this program was built without the page.
ExitStatus Run(const CommandLine& line) {
  const ViewArguments arguments{.file = PositionalPath(line, 0),
                                .output = PathValue(line, "output"),
                                .newer = PathValue(line, "compare"),
                                .textures = PathValues(line, "textures")};
  if (arguments.newer && !arguments.textures.empty()) {
    throw UsageError("--compare colours what differs; --textures excludes it", line.command);
  }
  if (arguments.file == "/dev/stdin" && !arguments.output) {
    throw UsageError("-o FILE is missing: the page of standard input", line.command);
  }
  RequirePageBuilt("view");
  Messages messages(false);
  const std::string output = arguments.output.value_or(PagePath(arguments.file));
  const OutputTarget target = FindOutput(output);
  std::vector<std::string> files{arguments.file};
  if (arguments.newer) files.push_back(*arguments.newer);
  RequireEffect(line, files);
  std::vector<ShownModel> shown;
  for (const std::string& file : files) {
    std::optional<ShownModel> loaded = LoadShownModel(line, file, target, messages);
    if (!loaded) return ExitStatus::kFailed;
    shown.push_back(std::move(*loaded));
  }
  const ModelFile& model = shown.front().model;
  const auto [name, newerName] = DistinctNames(files.front(), files.back());
  std::optional<ViewComparison> comparison;
  if (arguments.newer) comparison.emplace(model, shown.back().model, newerName);
  const std::optional<int> system = shown.front().coordinateSystem;
  const auto write =
      PageWriter(model, arguments.file,
                 {.fileName = name,
                  .coordinateSystem = system.value_or(shown.back().coordinateSystem.value_or(0)),
                  .comparison = comparison ? &*comparison : nullptr,
                  .textures = TexturesToShow(arguments, model, target, messages)});
  const ExitStatus status = std::max(shown.front().status, shown.back().status);
  if (!WriteOutput(target, write, messages)) return ExitStatus::kFailed;
  if (target.isStandardOutput) return status;
  try {
    PrintResult([&](std::ostream& out) {
      out << "wrote " << PrintableText(output, std::string::npos) << '\n';
    });
  } catch (const RunError& error) {
    messages.Warning("not-told", error.what());  // the page is in its place nevertheless
  }
  return status;
}

}  // namespace

CommandInfo ViewCommand() {
  static const std::vector<OptionInfo> kOptions = ShownOptions(kOwnOptions);
  return {.name = "view",
          .summary = "writes an HTML page that shows a model file or a scene in 3D",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
