#include "exporter/plugin/CurrentExport.h"

#include "exporter/base/ProcessState.h"
#include "exporter/base/StopWatch.h"
#include "exporter/geometry/CleanVertexAttributes.h"
#include "exporter/geometry/CollisionLists.h"
#include "exporter/geometry/ConvertCoordinates.h"
#include "exporter/geometry/DuplicateTwoSidedFaces.h"
#include "exporter/geometry/Gather.h"
#include "exporter/geometry/RenderBatches.h"
#include "exporter/geometry/VoxelPartition.h"
#include "exporter/modelwriter/GroupRecords.h"
#include "exporter/plugin/ExportModel.h"

namespace mapexport {
namespace {

GatherContext CurrentContext() {
  ProcessState& state = State();
  return {state.currentTime, state.options.coordinateSystem, state.options.textureCoordinateMode,
          state.transparentTextures, state.currentScene->materials};
}

void BuildBatches(GeometryGroup& group) {
  ProcessState& state = State();
  const VoxelGrid grid(group, state.options.geometryVoxelSize);
  state.voxelCellSize = grid.cellSize;
  BuildRenderBatches(group, BuildVoxelPartition(group, grid, state.random),
                     state.currentScene->materials);
}

}  // namespace

void ConvertPoint(Point3& p) {
  ConvertPoint(p, State().options.coordinateSystem);
}

void ConvertTextureCoordinates(Point3& uvw) {
  ConvertTextureCoordinates(uvw, State().options.textureCoordinateMode);
}

GeometryGroup* GatherGroup(GroupList& groupList, INode& node, const CStr& name) {
  return GatherGroup(groupList, node, name, CurrentContext());
}

void GatherNode(GroupList& groupList, GeometryGroup& group, INode& node) {
  GatherNode(groupList, group, node, CurrentContext());
}

void DuplicateTwoSidedFaces(GeometryGroup& group) {
  DuplicateTwoSidedFaces(group, State().currentScene->materials);
}

void CleanVertexAttributes(GeometryGroup& group) {
  CleanVertexAttributes(group, State().voxelCellSize);
}

GroupParts SplitGroup(GeometryGroup& group, bool hasFaceTable) {
  const ProcessState& state = State();
  const Interface* const host = state.currentInterface;
  const std::size_t longest = host == nullptr ? 0 : host->GetLongestList();
  if (longest == 0) return {};
  MergeCollisionLists(group);
  StopWatch watch;
  watch.Start();
  GroupParts parts =
      SplitGroup(group, VoxelGrid(group, state.options.geometryVoxelSize), {longest, hasFaceTable});
  watch.Stop();
  watch.Report("\t\tSplitGroup()");
  return parts;
}

void WriteQobRecord(GeometryGroup& group, BinaryWriter& out) {
  MergeCollisionLists(group);
  BuildBatches(group);
  WritePreparedQobRecord(group, out);
}

void WriteKobRecord(GeometryGroup& group, BinaryWriter& out) {
  MergeCollisionLists(group);
  PrepareCollisionLists(group);
  BuildBatches(group);
  WritePreparedKobRecord(group, out);
}

}  // namespace mapexport
