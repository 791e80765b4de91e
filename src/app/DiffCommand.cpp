// The command `diff`.
#include <array>
#include <optional>
#include <ostream>
#include <string>

#include "app/Commands.h"
#include "app/LoadModel.h"
#include "app/Messages.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "compare/WriteDifference.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{
    PositionalInfo{"A", "the older model file; the extension of each file chooses its layout"},
    PositionalInfo{"B", "the newer one"},
};
constexpr std::array kOptions{
    OptionInfo{.name = "json", .kind = OptionKind::kFlag, .help = "print one JSON document"},
};

/// Prints what changed between two model files.
ExitStatus Run(const CommandLine& line) {
  const Both<std::string> files{PositionalPath(line, 0), PositionalPath(line, 1)};
  Messages messages(false);
  const std::optional<LoadedModel> first = LoadModel(files[0], std::nullopt, messages);
  const std::optional<LoadedModel> second = LoadModel(files[1], std::nullopt, messages);
  if (!first || !second) return ExitStatus::kFailed;
  const ModelDifference difference = CompareModels(first->model, second->model);
  const bool arrived = PrintResult([&](std::ostream& out) {
    if (line.Has("json")) {
      WriteDifferenceJson(difference, files, out);
    } else {
      WriteDifferenceText(difference, out);
    }
  });
  if (!arrived) return ExitStatus::kFailed;
  return difference.result == ModelComparison::kDifferent ? ExitStatus::kDifferent
                                                          : ExitStatus::kDone;
}

}  // namespace

CommandInfo DiffCommand() {
  return {.name = "diff",
          .summary = "compares two model files: materials, surface sets, triangles",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
