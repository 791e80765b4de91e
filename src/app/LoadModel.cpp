#include "app/LoadModel.h"

#include <utility>

#include <fmt/format.h>

#include "app/export/ModelRemarks.h"
#include "modelreader/ReadModelFile.h"

namespace mapexport {

std::optional<LoadedModel> LoadModel(const std::string& path, std::optional<ModelLayout> layout,
                                     Messages& messages) {
  ModelReadResult read = ReadModelFile(path, layout.value_or(reader::LayoutOfName(path)));
  if (!read.Sound()) {
    for (const ModelProblem& problem : read.problems) {
      if (problem.severity != ModelSeverity::kError) continue;
      messages.Error("failed", fmt::format("{}: {}", path, ToLine(problem)));
    }
    return std::nullopt;
  }
  const ExitStatus status = WarnOfModel(read.problems, read.lengths, path, nullptr, messages);
  return LoadedModel{std::move(read.model), status};
}

}  // namespace mapexport
