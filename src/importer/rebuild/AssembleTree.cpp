// The host's tree of the nodes of a foreign scene.
#include "importer/rebuild/AssembleTree.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <utility>

namespace mapexport {

void AssembleTree(std::span<const int> parents, std::vector<SceneNode> nodes, SceneNode& root) {
  // From the back, a node is complete when its turn comes; its children are in reverse until then.
  for (std::size_t i = nodes.size(); i-- > 0;) {
    std::ranges::reverse(nodes[i].children);
    SceneNode& parent = parents[i] < 0 ? root : nodes[static_cast<std::size_t>(parents[i])];
    parent.children.push_back(std::move(nodes[i]));
  }
  std::ranges::reverse(root.children);
}

bool IsInventedRootName(const std::string& path, std::string_view name) {
  constexpr std::array<std::string_view, 6> kInvented{"",     "RootNode",    "ROOT",
                                                      "root", "$dummy_root", "$CSM_DummyRoot"};
  return std::ranges::find(kInvented, name) != kInvented.end() ||
         (name.starts_with('<') && name.ends_with('>')) || name == path ||
         name == std::filesystem::path(path).filename().string();
}

}  // namespace mapexport
