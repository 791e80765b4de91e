// The command `scene`.
#include <array>
#include <ostream>
#include <string>

#include <fmt/format.h>

#include "app/Commands.h"
#include "app/LoadScene.h"
#include "app/Messages.h"
#include "app/Stages.h"
#include "app/WriteOutput.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{
    PositionalInfo{"SCENE", "a scene, in any format that `export` reads"},
};
constexpr std::array kOptions{
    OptionInfo{.name = "output",
               .kind = OptionKind::kText,
               .argument = "FILE",
               .help = "the .scene.json or .scene.bin to write instead of standard output (\"-\"), "
                       "which gets text",
               .letter = 'o'},
    kUpOption,
    kSceneScaleOption,
    kHiddenOption,
    kReadLimitOption,
    kKeywordsOption,
    kOneSidedOption,
};

struct SceneArguments {
  SceneSource scene;
  std::string output;
};

/// Writes a scene as a scene file.
ExitStatus Run(const CommandLine& line) {
  const SceneArguments arguments{.scene = SceneOf(line),
                                 .output = PathValue(line, "output").value_or("-")};
  Messages messages(false);
  Stages stages(false);
  const OutputTarget target = FindOutput(arguments.output);
  TakenFiles inputs;
  AddNamedInputs(arguments.scene, inputs);
  inputs.RequireFree(target);
  const LoadedScene loaded = LoadScene(arguments.scene, messages, stages);
  for (const std::string& file : loaded.sideFiles) inputs.Add(file, kSideInput);
  inputs.RequireFree(target);
  if (!target.isStandardOutput && !IsSceneFile(arguments.output)) {
    messages.Warning(
        "other-extension",
        fmt::format("{}: does not end in .scene.json or .scene.bin, so it won't be read as a scene "
                    "file",
                    arguments.output));
  }
  stages.Begin("writing");
  const auto write = IsBinarySceneFile(arguments.output) ? WriteBinaryScene : WriteSceneFile;
  const auto writeScene = [&](std::ostream& out) { write(loaded.scene, out); };
  return WriteOutput(target, writeScene, messages) ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

CommandInfo SceneCommand() {
  return {.name = "scene",
          .summary = "writes a scene as the exporter will see it",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
