#include "exporter/modelwriter/GroupRecords.h"

#include <span>
#include <vector>

#include "exporter/base/GrowableArray.h"
#include "exporter/geometry/CollisionLists.h"
#include "exporter/modelwriter/IndexLimit.h"
#include "exporter/modelwriter/RecordHeader.h"

namespace mapexport {
namespace {

/// The place of each attribute in a batch's corner attribute list, the first one where it occurs
/// twice.
class CornerPlaces {
 public:
  explicit CornerPlaces(std::size_t attributeCount) : places_(attributeCount) {}

  void Take(const RenderBatch& batch) {
    // Backwards: the first one is what stays.
    for (auto i = static_cast<std::uint32_t>(batch.cornerAttributes.size()); i-- > 0;) {
      places_[batch.cornerAttributes[i]] = i;
    }
  }

  /// Of an attribute that the batch taken last has.
  std::uint32_t Of(std::uint32_t attribute) const { return places_[attribute]; }

 private:
  std::vector<std::uint32_t> places_;
};

void WriteBatch(const GeometryGroup& group, const RenderBatch& batch, CornerPlaces& places,
                BinaryWriter& out) {
  places.Take(batch);
  out.I32(batch.material);
  const std::span<const std::uint32_t> faces = batch.faces;
  const auto faceOf = [&](std::size_t i) -> const GroupFace& { return group.faces[faces[i]]; };
  out.Count(faces.size());
  out.Entries(faces.size(), 16, [&](BinaryCursor& entry, std::size_t i) {
    FetchAhead(group.faces, faces, i);
    const CollisionPlane plane = PlaneOf(faceOf(i).normal, group.vertices[faceOf(i).v[0]]);
    entry.Point(plane.normal);
    entry.F32(plane.d);
  });
  out.Entries(faces.size(), 6, [&](BinaryCursor& entry, std::size_t i) {
    for (const std::uint32_t v : faceOf(i).v) entry.U16(v);
  });
  out.Entries(faces.size(), 6, [&](BinaryCursor& entry, std::size_t i) {
    for (const std::uint32_t a : faceOf(i).a) entry.U16(places.Of(a));
  });

  const std::size_t corners = batch.cornerAttributes.size();
  const auto attributeOf = [&](std::size_t i) -> const VertexAttribute& {
    return group.attributes[batch.cornerAttributes[i]];
  };
  out.Count(corners);
  out.Entries(corners, 12, [&](BinaryCursor& entry, std::size_t i) {
    FetchAhead(group.attributes, batch.cornerAttributes, i);
    entry.Point(attributeOf(i).normal);
  });
  out.Entries(corners, 8, [&](BinaryCursor& entry, std::size_t i) {
    entry.F32(attributeOf(i).uvw.x);
    entry.F32(attributeOf(i).uvw.y);
  });
  out.Entries(corners, 16, [&](BinaryCursor& entry, std::size_t i) {
    const ColourRgba& colour = attributeOf(i).colour;
    entry.F32(colour.r);
    entry.F32(colour.g);
    entry.F32(colour.b);
    entry.F32(colour.a);
  });
}

void WritePoints(std::span<const Point3> points, BinaryWriter& out) {
  out.Count(points.size());
  out.Entries(points.size(), 12,
              [&](BinaryCursor& entry, std::size_t i) { entry.Point(points[i]); });
}

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

void WritePreparedQobRecord(const GeometryGroup& group, BinaryWriter& out) {
  SizeField size(out);
  WriteRecordHeader(out, group.typeCode, group.version, group.name);
  size.BeginBody();
  LogOverlongList(group, "vertices", group.vertices.size());
  WritePoints({group.vertices.data(), group.vertices.size()}, out);
  out.Count(group.batches.size());
  CornerPlaces places(group.attributes.size());
  for (std::size_t ordinal = 0; ordinal < group.batches.size(); ++ordinal) {
    const RenderBatch batch = group.batches[ordinal];
    LogOverlongList(group, "corners of batch", ordinal, batch.cornerAttributes.size());
    WriteBatch(group, batch, places, out);
  }
  size.EndBody();
}

void WritePreparedKobRecord(const GeometryGroup& group, BinaryWriter& out) {
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
