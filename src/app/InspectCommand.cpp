#include "app/InspectCommand.h"

#include <optional>
#include <ostream>

#include "app/LoadModel.h"
#include "app/Messages.h"
#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "system/StandardOutput.h"

namespace mapexport {

ExitStatus RunInspectCommand(const InspectArguments& arguments) {
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

}  // namespace mapexport
