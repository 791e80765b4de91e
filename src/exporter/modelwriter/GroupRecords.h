// The group records of both layouts.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

// A list that is longer than 16-bit indices can address is reported to the debug log and written
// with the low 16 bits of its indices.

/// Writes the QOB group record: the vertices and the render batches, which BuildRenderBatches
/// built.
void WritePreparedQobRecord(const GeometryGroup& group, BinaryWriter& out);

/// Writes the second group record: a complete QOB group record, the collision points and planes of
/// PrepareCollisionLists, a table of all faces, and the surface sets.
void WritePreparedKobRecord(const GeometryGroup& group, BinaryWriter& out);

}  // namespace mapexport
