// The host's tree of the nodes of a foreign scene.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// Hangs `nodes`, which stand in pre-order, below `root`. `parents` has the index of each one's
/// parent, -1 for the root.
void AssembleTree(std::span<const int> parents, std::vector<SceneNode> nodes, SceneNode& root);

/// Whether a bare root of that name was made up by whatever wrote or read the file at `path`, and
/// only stands for the root that the host's scene has anyway.
bool IsInventedRootName(const std::string& path, std::string_view name);

}  // namespace mapexport
