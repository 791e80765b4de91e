// Nodes that a foreign scene hides.
#include "importer/HiddenNodes.h"

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

#include "importer/LeftOut.h"

namespace mapexport {

void TellHiddenNodes(const std::vector<std::string>& names, const ImportOptions& options,
                     Remarks& remarks, LeftOut& leftOut) {
  if (names.empty()) return;
  if (options.skipHidden) {
    leftOut.hidden += names.size();
    return;
  }
  std::string list;
  constexpr std::size_t kMostNames = 5;
  for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
    list += fmt::format("{}\"{}\"", i == 0 ? "" : ", ", names[i]);
  }
  remarks.push_back(MakeNote(
      "hidden-nodes",
      fmt::format("{} hidden in the file and kept: {}{}",
                  names.size() == 1 ? "1 mesh is" : fmt::format("{} meshes are", names.size()),
                  list, names.size() > kMostNames ? ", ..." : ""),
      names.size()));
}

void HandleHiddenNodes(const std::vector<bool>& isHidden, const ImportOptions& options,
                       std::vector<SceneNode>& nodes, Remarks& remarks, LeftOut& leftOut) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (!isHidden[i]) continue;
    if (nodes[i].mesh != nullptr) names.push_back(nodes[i].name);
    if (!options.skipHidden) continue;
    nodes[i].object = SceneObject::kNone;
    nodes[i].mesh = nullptr;
    nodes[i].material = -1;
  }
  TellHiddenNodes(names, options, remarks, leftOut);
}

}  // namespace mapexport
