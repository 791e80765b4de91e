// The QOB group record: vertices and render batches.
#pragma once

#include <span>

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

/// Builds the group's voxel partition and render batches and writes the QOB group record. All faces
/// are drawn. The faces keep the ordinals of their batches and their places in them. Voxel size,
/// random generator and the cell size that stays behind are the process's; needs the running
/// export's materials.
///
/// A list that is longer than 16-bit indices can address is told to the debug log and written with
/// the low 16 bits of its indices.
void WriteQobRecord(GeometryGroup& group, BinaryWriter& out);

/// The same for a group whose collision-only faces may have been separated.
void WritePreparedQobRecord(GeometryGroup& group, BinaryWriter& out);

/// Writes the number of points, then the points.
void WritePoints(std::span<const Point3> points, BinaryWriter& out);

}  // namespace mapexport
