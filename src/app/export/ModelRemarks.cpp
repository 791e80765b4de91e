#include "app/export/ModelRemarks.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "modelreader/OverlongLists.h"
#include "system/PrintableText.h"

namespace mapexport {
namespace {

/// Adds the nodes of the scene that fill `list` most. Points come from the nodes' vertices; faces
/// and their corners from the triangles.
void NameCulprits(const OverlongList& list, const SceneCensus& census, Remark& remark) {
  constexpr std::size_t kMostInText = 5;
  const bool ofPoints =
      list.place.ends_with(".vertices") || list.place.ends_with(".collisionPoints");
  const auto count = ofPoints ? &NodeCensus::vertices : &NodeCensus::triangles;
  std::string names;
  for (const NodeCensus* node : LargestNodes(census, count)) {
    if (remark.nodes.size() < kMostInText) {
      names +=
          fmt::format("{}{} ({})", names.empty() ? "" : ", ", Quoted(node->name), node->*count);
    }
    remark.nodes.push_back(node->name);
  }
  remark.text +=
      fmt::format("; the scene has most {} in {}", ofPoints ? "vertices" : "triangles", names);
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
    Remark remark = MakeWarning("list-too-long", fmt::format("{}: {}", name, ToLine(list)));
    if (census != nullptr) NameCulprits(list, *census, remark);
    remark.text += std::exchange(advice, "");
    messages.Tell(std::move(remark));
  }
  return overlong.empty() ? ExitStatus::kDone : ExitStatus::kOverlongLists;
}

}  // namespace mapexport
