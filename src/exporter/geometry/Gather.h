// Walks the host's node tree and gathers it into a geometry group.
#pragma once

#include "exporter/geometry/GatherMesh.h"
#include "exporter/geometry/GroupList.h"
#include "host/INode.h"

namespace mapexport {

/// Makes a group of that name, fills it from `node` and everything below, appends it to the list.
GeometryGroup* GatherGroup(GroupList& groupList, INode& node, const CStr& name,
                           const GatherContext& context);

/// Appends one node's mesh and, recursively, its children. A child whose name begins with "exclude"
/// (in any case) is left out with its subtree. One that begins with "static" gets a new surface set
/// for its subtree, up to the end of the first "static" node nested in it. The walk ends at a node
/// whose render mesh is missing or has no faces, but goes on below a node without an object that
/// converts to a mesh.
void GatherNode(GroupList& groupList, GeometryGroup& group, INode& node,
                const GatherContext& context);

}  // namespace mapexport
