#include "app/InspectCommand.h"

#include <ostream>

#include <fmt/format.h>

#include "app/Messages.h"
#include "app/ModelRemarks.h"
#include "app/StandardOutput.h"
#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "modelreader/ReadModelFile.h"

namespace mapexport {

ExitStatus RunInspectCommand(const InspectArguments& arguments) {
  Messages messages(false);
  const ModelReadResult read =
      ReadModelFile(arguments.file, arguments.layout.value_or(LayoutOfPath(arguments.file)));
  if (!read.Sound()) {
    for (const ModelProblem& problem : read.problems) {
      if (problem.severity != ModelSeverity::kError) continue;
      messages.Error(fmt::format("{}: {}", arguments.file, ToLine(problem)));
    }
    return ExitStatus::kFailed;
  }

  const ExitStatus status = WarnOfModel(read, arguments.file, nullptr, messages);
  const bool arrived = PrintResult([&](std::ostream& out) {
    if (arguments.json) {
      WriteModelJson(read.model, arguments.summary, out);
    } else {
      WriteModelText(read.model, out);
    }
  });
  return arrived ? status : ExitStatus::kFailed;
}

}  // namespace mapexport
