#include "app/SceneCommand.h"

#include <cerrno>
#include <ostream>

#include <fcntl.h>
#include <fmt/format.h>

#include "app/FdOutput.h"
#include "app/LoadScene.h"
#include "app/Messages.h"
#include "app/OutputPlace.h"
#include "app/RunError.h"
#include "app/StandardOutput.h"
#include "scene/SceneFile.h"
#include "settings/Descriptor.h"

namespace mapexport {
namespace {

void WriteToFile(const Scene& scene, const OutputTarget& target, const Messages& messages) {
  OutputPlace place(target, NamePart(target.path));
  const Descriptor file(open(place.File().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  int error = errno;
  if (file.IsOpen()) {
    FdOutput output(file.Get());
    std::ostream out(&output);
    WriteSceneFile(scene, out);
    error = output.Finish();
  }
  if (error != 0) {
    throw RunError(fmt::format("{}: cannot be written: {}", target.name, ErrnoText(error)));
  }
  if (const std::string warning = place.Commit(); !warning.empty()) messages.Warning(warning);
}

}  // namespace

ExitStatus RunSceneCommand(const SceneArguments& arguments) {
  const Messages messages(false);
  if (!arguments.output) {
    const Scene scene = LoadScene(arguments.scene, messages);
    const bool arrived = PrintResult([&](std::ostream& out) { WriteSceneFile(scene, out); });
    return arrived ? ExitStatus::kDone : ExitStatus::kFailed;
  }

  const OutputTarget target = FindOutput(*arguments.output);
  const Scene scene = LoadScene(arguments.scene, messages);
  if (!IsSceneFile(*arguments.output)) {
    messages.Warning(fmt::format("{}: does not end in .scene.json, by which a scene file is known",
                                 *arguments.output));
  }
  WriteToFile(scene, target, messages);
  return ExitStatus::kDone;
}

}  // namespace mapexport
