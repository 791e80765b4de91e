// The command `inspect`.
#include <array>
#include <optional>
#include <ostream>
#include <string>

#include "app/Commands.h"
#include "app/LoadModel.h"
#include "app/Messages.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "modelreader/WriteModel.h"
#include "system/StandardOutput.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{kModelPositional};
constexpr std::array kOptions{
    OptionInfo{.name = "json", .kind = OptionKind::kFlag, .help = "print one JSON document"},
    OptionInfo{.name = "summary",
               .kind = OptionKind::kFlag,
               .help = "print counts instead of the long lists"},
    kLayoutOption,
};

struct InspectArguments {
  std::string file;
  bool json = false;
  bool summary = false;
  std::optional<ModelLayout> layout;
};

/// Checks a model file and prints its contents; defects go to standard error.
ExitStatus Run(const CommandLine& line) {
  const InspectArguments arguments{.file = PositionalPath(line, 0),
                                   .json = line.Has("json"),
                                   .summary = line.Has("summary"),
                                   .layout = LayoutValue(line)};
  Messages messages(false);
  const std::optional<LoadedModel> loaded = LoadModel(arguments.file, arguments.layout, messages);
  if (!loaded) return ExitStatus::kFailed;
  const bool arrived = PrintResult([&](std::ostream& out) {
    if (arguments.json) {
      WriteModelJson(loaded->model, arguments.summary, out);
    } else {
      WriteModelText(loaded->model, out);
    }
  });
  return arrived ? loaded->status : ExitStatus::kFailed;
}

}  // namespace

CommandInfo InspectCommand() {
  return {.name = "inspect",
          .summary = "checks a model file and prints what it holds",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
