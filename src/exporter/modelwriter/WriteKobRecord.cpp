#include "exporter/modelwriter/WriteKobRecord.h"

#include "exporter/geometry/CollisionLists.h"
#include "exporter/modelwriter/IndexLimit.h"
#include "exporter/modelwriter/RecordHeader.h"
#include "exporter/modelwriter/WriteQobRecord.h"

namespace mapexport {
namespace {

void WriteFaceTable(const GeometryGroup& group, BinaryWriter& out) {
  std::uint32_t withoutBatch = 0;  // faces so far, and so the index of the next one's plane
  out.Count(group.faces.size());
  out.Entries(group.faces.size(), 16, [&](BinaryCursor& entry, std::size_t f) {
    const GroupFace& face = group.faces[f];
    for (const std::uint32_t v : face.v) entry.U16(v);
    entry.U16(face.batchIndex == -1 ? withoutBatch++ : face.batchPosition);
    entry.I32(face.surfaceSet);
    entry.I32(face.batchIndex);
  });
}

void WriteSurfaceSets(const GeometryGroup& group, BinaryWriter& out) {
  out.Count(group.surfaceSets.size());
  for (const SurfaceSet& set : group.surfaceSets) {
    out.LString(set.name.View());
    out.U32(set.flags);
    out.Count(set.faces.size());
    out.Entries(set.faces.size(), 2,
                [&](BinaryCursor& entry, std::size_t i) { entry.U16(set.faces[i]); });
  }
}

void LogOverlongLists(const GeometryGroup& group) {
  for (std::size_t ordinal = 0; ordinal < group.batches.size(); ++ordinal) {
    LogOverlongList(group, "faces of batch", ordinal, group.batches[ordinal].faces.size());
  }
  LogOverlongList(group, "collision points", group.collisionPoints.size());
  LogOverlongList(group, "faces", group.faces.size());
}

}  // namespace

void WriteKobRecord(GeometryGroup& group, BinaryWriter& out) {
  MergeCollisionLists(group);
  PrepareCollisionLists(group);

  SizeField size(out);
  WriteRecordHeader(out, kSecondGroupType, group.version, group.name);
  size.BeginBody();
  WritePreparedQobRecord(group, out);
  LogOverlongLists(group);
  WritePoints(group.collisionPoints, out);
  out.Count(group.collisionPlanes.size());
  out.Entries(group.collisionPlanes.size(), 16, [&](BinaryCursor& entry, std::size_t i) {
    entry.Point(group.collisionPlanes[i].normal);
    entry.F32(group.collisionPlanes[i].d);
  });
  WriteFaceTable(group, out);
  WriteSurfaceSets(group, out);
  size.EndBody();
}

}  // namespace mapexport
