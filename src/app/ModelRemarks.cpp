#include "app/ModelRemarks.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "modelreader/OverlongLists.h"

namespace mapexport {

ExitStatus WarnOfModel(const ModelReadResult& read, const std::string& name,
                       const Messages& messages) {
  const std::vector<OverlongList> overlong = OverlongLists(read.model);
  for (const ModelProblem& problem : read.problems) {
    // A list whose indices are cut is told of once, as an overlong one.
    const bool told = problem.code == ModelProblemCode::kIndicesCut && !overlong.empty();
    if (!told) messages.Warning(fmt::format("{}: {}", name, ToLine(problem)));
  }
  for (const OverlongList& list : overlong) {
    messages.Warning(fmt::format("{}: {}", name, ToLine(list)));
  }
  return overlong.empty() ? ExitStatus::kDone : ExitStatus::kOverlongLists;
}

}  // namespace mapexport
