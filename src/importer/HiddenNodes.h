// Nodes that a foreign scene hides.
#pragma once

#include <string>
#include <vector>

#include "importer/ImportOptions.h"
#include "scene/Scene.h"
#include "system/Remark.h"

namespace mapexport {

struct LeftOut;

/// Counts the nodes `names`, hidden ones with a mesh, as left out when the options say so; else
/// adds a note that names the first ones. Nothing for an empty list.
void TellHiddenNodes(const std::vector<std::string>& names, const ImportOptions& options,
                     Remarks& remarks, LeftOut& leftOut);

/// TellHiddenNodes for those of `nodes` that have a mesh and that `isHidden`, by index. Hidden ones
/// lose what they show when the options say so.
void HandleHiddenNodes(const std::vector<bool>& isHidden, const ImportOptions& options,
                       std::vector<SceneNode>& nodes, Remarks& remarks, LeftOut& leftOut);

}  // namespace mapexport
