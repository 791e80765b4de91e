#include "scene/IdleKeywords.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "scene/UserProperties.h"
#include "system/Ascii.h"
#include "system/FaceKeywords.h"

namespace mapexport {
namespace {

constexpr std::array kReasons{
    "the node has no triangles, and keywords are not handed down",
    "the node is within a \"static\" node, whose surface set ignores keywords"};
enum Reason { kNoTriangle, kStatic };

/// Walks the nodes as the exporter does.
class IdleKeywordFinder {
 public:
  void Visit(const SceneNode& node) {
    const bool hasTriangle = node.mesh != nullptr && !node.mesh->faces.empty();
    if (!hasTriangle) {
      Add(kNoTriangle, node);
      if (node.object == SceneObject::kMesh) return;
    } else if (isStatic_) {
      Add(kStatic, node);
    }
    for (const SceneNode& child : node.children) {
      const bool beginsStatic = StartsWithAnyCase(child.name, "static");
      if (beginsStatic) isStatic_ = true;
      if (!StartsWithAnyCase(child.name, "exclude")) Visit(child);
      if (beginsStatic) isStatic_ = false;  // for what follows it in an outer one, too
    }
  }

  Remarks Take() {
    Remarks remarks;
    for (std::size_t reason = 0; reason < kReasons.size(); ++reason) {
      for (std::size_t i = 0; i < kFaceKeywords.size(); ++i) {
        std::vector<std::string>& nodes = nodes_[reason][i];
        if (nodes.empty()) continue;
        const std::string more =
            nodes.size() == 1 ? "" : fmt::format(" and {} more", nodes.size() - 1);
        remarks.push_back(MakeWarning(
            "idle-keyword",
            fmt::format("\"{}\" in the user properties of node \"{}\"{} does nothing: {}",
                        kFaceKeywords[i], nodes.front(), more, kReasons[reason]),
            nodes.size()));
        remarks.back().nodes = std::move(nodes);
      }
    }
    return remarks;
  }

 private:
  void Add(Reason reason, const SceneNode& node) {
    for (std::size_t i = 0; i < kFaceKeywords.size(); ++i) {
      if (!HasWord(node.userProperties, kFaceKeywords[i])) continue;
      nodes_[reason][i].push_back(node.name);
    }
  }

  bool isStatic_ = false;
  std::array<std::array<std::vector<std::string>, kFaceKeywords.size()>, kReasons.size()> nodes_;
};

}  // namespace

Remarks FindIdleKeywords(const Scene& scene) {
  IdleKeywordFinder finder;
  finder.Visit(scene.root);
  return finder.Take();
}

}  // namespace mapexport
