#include "modelfile/WriteKobRecord.h"

#include <vector>

#include "geometry/CollisionLists.h"
#include "modelfile/IndexLimit.h"
#include "modelfile/RecordHeader.h"
#include "modelfile/WriteQobRecord.h"

namespace mapexport {
namespace {

/// What the face table says in its position field of a face that its batch does not list.
constexpr std::uint32_t kNoPosition = 0xFFFF;

/// Per face: its position in its batch's face list, kNoPosition where no batch lists it.
std::vector<std::uint32_t> FacePositions(const GeometryGroup& group) {
  std::vector<std::uint32_t> positions(group.faces.size(), kNoPosition);
  for (const RenderBatch& batch : group.batches) {
    for (std::uint32_t i = 0; i < batch.faces.size(); ++i) positions[batch.faces[i]] = i;
  }
  return positions;
}

void WriteFaceTable(const GeometryGroup& group, BinaryWriter& out) {
  const std::vector<std::uint32_t> positions = FacePositions(group);
  std::uint32_t withoutBatch = 0;  // faces so far, and so the index of the next one's plane
  out.Count(group.faces.size());
  out.Entries(group.faces.size(), 16, [&](BinaryCursor& entry, std::size_t f) {
    const GroupFace& face = group.faces[f];
    for (const std::uint32_t v : face.v) entry.U16(v);
    entry.U16(face.batchIndex == -1 ? withoutBatch++ : positions[f]);
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
