// Gathers one node's render mesh.
#pragma once

#include "exporter/geometry/GroupList.h"
#include "host/INode.h"

namespace mapexport {

/// Appends the mesh's vertices, converted to export coordinates, one face per host triangle and the
/// attributes of its corners. Triangles without area are left out and told to the debug log. The
/// surface set is that of the static subtree when one is being gathered, else the one of the node's
/// face flags. Needs the running export's materials. Linear in the mesh, but for k faces that are
/// smoothed around one vertex, which cost k * k additions: each sum starts from its own face's
/// normal.
void GatherMesh(GroupList& groupList, GeometryGroup& group, INode& node, const Mesh& mesh);

}  // namespace mapexport
