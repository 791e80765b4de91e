// The second group record: the QOB record, collision lists, faces and surface sets.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

/// Separates the group's collision-only faces and writes the second group record: a complete QOB
/// group record, the collision points and planes, a table of all faces, and the surface sets.
/// Changes the group's vertices and the faces' vertex indices; writing it a second time starts from
/// drawn faces again. Uses the process's state and tells of overlong lists as WriteQobRecord does.
void WriteKobRecord(GeometryGroup& group, BinaryWriter& out);

}  // namespace mapexport
