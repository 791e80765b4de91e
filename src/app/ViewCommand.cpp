#include "app/ViewCommand.h"

#include <optional>
#include <ostream>
#include <string>

#include <fmt/format.h>

#include "app/LoadModel.h"
#include "app/Messages.h"
#include "app/TellPlaced.h"
#include "output/OutputPlace.h"
#include "output/TakenFiles.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"
#include "view/WritePage.h"

namespace mapexport {

ExitStatus RunViewCommand(const ViewArguments& arguments) {
  if (!CanWritePage()) {
    throw RunError(
        "view: this mapexport was built without the page; build it with Node.js and npm at hand");
  }
  Messages messages(false);
  const std::string output = arguments.output.value_or(arguments.file + ".html");
  std::optional<OutputTarget> target;
  if (!IsStandardOutput(output)) target = FindOutput(output);
  TakenFiles inputs;
  inputs.Add(arguments.file, "model file");
  if (target) {
    inputs.RequireFree(*target);
  } else {
    inputs.RequireNotStandardOutput();
  }
  const std::optional<LoadedModel> loaded = LoadModel(arguments.file, arguments.layout, messages);
  if (!loaded) return ExitStatus::kFailed;
  if (ModelBlockBytes(loaded->model) > kMaxModelBlockBytes) {
    throw RunError(fmt::format("{}: too large for a page: its lists take more than {} MiB",
                               arguments.file, kMaxModelBlockBytes >> 20));
  }

  const ViewInfo info{NamePart(arguments.file), arguments.coordinateSystem};
  const auto write = [&](std::ostream& out) { WritePage(loaded->model, info, out); };
  if (!target) return PrintResult(write) ? loaded->status : ExitStatus::kFailed;
  OutputPlace place(*target, NamePart(target->path));
  place.Fill(write);
  place.Commit();
  TellPlaced(place, messages);
  try {
    PrintResult([&](std::ostream& out) {
      out << "wrote " << PrintableText(output, std::string::npos) << '\n';
    });
  } catch (const RunError& error) {
    messages.Warning("not-told", error.what());  // the page is in its place all the same
  }
  return loaded->status;
}

}  // namespace mapexport
