#include "app/export/ModelRemarks.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "modelreader/OverlongLists.h"

namespace mapexport {
namespace {

/// The nodes of the scene that fill `list` most, as the end of a line. Points come from the nodes'
/// vertices; faces and their corners from the triangles.
std::string Culprits(const OverlongList& list, const SceneCensus& census) {
  const bool ofPoints =
      list.place.ends_with(".vertices") || list.place.ends_with(".collisionPoints");
  return fmt::format(
      "; the scene has most {} in {}", ofPoints ? "vertices" : "triangles",
      LargestNodes(census, ofPoints ? &NodeCensus::vertices : &NodeCensus::triangles));
}

}  // namespace

ExitStatus WarnOfModel(std::span<const ModelProblem> problems, const ModelLengths& lengths,
                       const std::string& name, const SceneCensus* census, Messages& messages) {
  const std::vector<OverlongList> overlong = OverlongLists(lengths);
  for (const ModelProblem& problem : problems) {
    const bool isCut = problem.code == ModelProblemCode(ModelFault::kIndicesCut);
    // A list with cut indices is reported once, as an overlong one.
    if (isCut && !overlong.empty()) continue;
    messages.Warning(isCut ? RemarkCode("indices-cut") : RemarkCode("not-finite"),
                     fmt::format("{}: {}", name, ToLine(problem)));
  }
  std::string_view advice = "; the export's --split divides the group";
  for (const OverlongList& list : overlong) {
    messages.Warning("list-too-long", fmt::format("{}: {}{}{}", name, ToLine(list),
                                                  census == nullptr ? "" : Culprits(list, *census),
                                                  std::exchange(advice, "")));
  }
  return overlong.empty() ? ExitStatus::kDone : ExitStatus::kOverlongLists;
}

}  // namespace mapexport
