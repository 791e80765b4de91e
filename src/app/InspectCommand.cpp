// The command `inspect`.
#include <array>
#include <optional>
#include <ostream>
#include <string>

#include <fmt/format.h>

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
    OptionInfo{
        .name = "batches",
        .kind = OptionKind::kFlag,
        .help =
            "print only the table of batches, with all rows; --materials and --sets add theirs"},
    OptionInfo{.name = "materials",
               .kind = OptionKind::kFlag,
               .help = "print only the table of materials, with all rows"},
    OptionInfo{.name = "sets",
               .kind = OptionKind::kFlag,
               .help = "print only the table of surface sets, with all rows"},
    kLayoutOption,
};

struct InspectArguments {
  std::string file;
  bool json = false;
  bool summary = false;
  std::optional<ModelParts> parts;  ///< nothing for the whole text
  std::optional<ModelLayout> layout;
};

/// The tables that the options choose.
std::optional<ModelParts> PartsValue(const CommandLine& line) {
  for (const char* const part : {"batches", "materials", "sets"}) {
    for (const char* const whole : {"json", "summary"}) {
      if (line.Has(part) && line.Has(whole)) {
        throw UsageError(fmt::format("--{} and --{} exclude each other", part, whole),
                         line.command);
      }
    }
  }
  const ModelParts parts{line.Has("batches"), line.Has("materials"), line.Has("sets")};
  if (!parts.batches && !parts.materials && !parts.sets) return std::nullopt;
  return parts;
}

/// Checks a model file and prints its contents; defects go to standard error.
ExitStatus Run(const CommandLine& line) {
  const InspectArguments arguments{.file = PositionalPath(line, 0),
                                   .json = line.Has("json"),
                                   .summary = line.Has("summary"),
                                   .parts = PartsValue(line),
                                   .layout = LayoutValue(line)};
  Messages messages(false);
  const std::optional<LoadedModel> loaded = LoadModel(arguments.file, arguments.layout, messages);
  if (!loaded) return ExitStatus::kFailed;
  const bool arrived = PrintResult([&](std::ostream& out) {
    if (arguments.json) {
      WriteModelJson(loaded->model, arguments.summary, out);
    } else if (arguments.parts) {
      WriteModelParts(loaded->model, *arguments.parts, out);
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
