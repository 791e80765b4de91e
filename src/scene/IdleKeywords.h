// Finds keywords without effect.
#pragma once

#include "scene/Scene.h"
#include "system/Remark.h"

namespace mapexport {

/// A warning for each keyword that has no effect on exported nodes, because the node has no
/// triangles, or because it is within a "static" node, whose surface set ignores keywords.
Remarks FindIdleKeywords(const Scene& scene);

}  // namespace mapexport
