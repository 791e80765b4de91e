// The operations that take what the process holds for the current export.
#pragma once

#include "exporter/geometry/GroupList.h"
#include "exporter/geometry/SplitGroup.h"
#include "exporter/modelwriter/BinaryWriter.h"
#include "host/INode.h"

namespace mapexport {

// Each reads the process's state at the call and hands it, as values, to the form in geometry/ that
// says what is done. Nothing in geometry/ and modelwriter/ reads that state; they only
// write to the debug log.

/// By the options' coordinate system.
void ConvertPoint(Point3& p);
/// By the options' texture coordinate mode.
void ConvertTextureCoordinates(Point3& uvw);

/// At the current time, by the options' modes and the transparent textures, with the materials of
/// the current scene.
GeometryGroup* GatherGroup(GroupList& groupList, INode& node, const CStr& name);
/// The same for one node and what is below it.
void GatherNode(GroupList& groupList, GeometryGroup& group, INode& node);

/// By the current scene's materials.
void DuplicateTwoSidedFaces(GeometryGroup& group);
/// By the cell size of the voxel grid built last.
void CleanVertexAttributes(GeometryGroup& group);

/// By the longest list that the host wants and the options' voxel size. `hasFaceTable`: for the
/// second layout. Draws all faces of a group that the host may want divided.
GroupParts SplitGroup(GeometryGroup& group, bool hasFaceTable);

/// Draws all faces: builds the voxel partition and the render batches by the options' voxel size,
/// the random generator and the current scene's materials, then writes the QOB group record. The
/// grid's cell size stays behind as the one built last. A group can be written again, in either
/// layout.
void WriteQobRecord(GeometryGroup& group, BinaryWriter& out);
/// The same for the second group record. Separates the collision-only faces first, which changes
/// the group's vertices and the faces' vertex indices.
void WriteKobRecord(GeometryGroup& group, BinaryWriter& out);

}  // namespace mapexport
