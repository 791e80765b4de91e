#include "exporter/modelwriter/WriteQobRecord.h"

#include <span>

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/CollisionLists.h"
#include "exporter/geometry/FetchAhead.h"
#include "exporter/geometry/RenderBatches.h"
#include "exporter/geometry/VoxelPartition.h"
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

/// Writes a batch and stores its ordinal, and their places in it, in its faces.
void WriteBatch(GeometryGroup& group, std::size_t ordinal, CornerPlaces& places,
                BinaryWriter& out) {
  const RenderBatch batch = group.batches[ordinal];
  places.Take(batch);
  out.I32(batch.material);
  const std::span<const std::uint32_t> faces = batch.faces;
  const auto faceOf = [&](std::size_t i) -> const GroupFace& { return group.faces[faces[i]]; };
  out.Count(faces.size());
  out.Entries(faces.size(), 16, [&](BinaryCursor& entry, std::size_t i) {
    FetchAhead(group.faces, faces, i);
    GroupFace& face = group.faces[faces[i]];
    face.batchIndex = static_cast<std::int32_t>(ordinal);
    face.batchPosition = static_cast<std::uint16_t>(i);
    const CollisionPlane plane = PlaneOf(face.normal, group.vertices[face.v[0]]);
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

}  // namespace

void WritePoints(std::span<const Point3> points, BinaryWriter& out) {
  out.Count(points.size());
  out.Entries(points.size(), 12,
              [&](BinaryCursor& entry, std::size_t i) { entry.Point(points[i]); });
}

void WriteQobRecord(GeometryGroup& group, BinaryWriter& out) {
  MergeCollisionLists(group);
  WritePreparedQobRecord(group, out);
}

void WritePreparedQobRecord(GeometryGroup& group, BinaryWriter& out) {
  ProcessState& state = State();
  const VoxelGrid grid(group, state.options.geometryVoxelSize);
  state.voxelCellSize = grid.cellSize;
  BuildRenderBatches(group, BuildVoxelPartition(group, grid, state.random));

  SizeField size(out);
  WriteRecordHeader(out, group.typeCode, group.version, group.name);
  size.BeginBody();
  LogOverlongList(group, "vertices", group.vertices.size());
  WritePoints({group.vertices.data(), group.vertices.size()}, out);
  out.Count(group.batches.size());
  CornerPlaces places(group.attributes.size());
  for (std::size_t ordinal = 0; ordinal < group.batches.size(); ++ordinal) {
    LogOverlongList(group, "corners of batch", ordinal,
                    group.batches[ordinal].cornerAttributes.size());
    WriteBatch(group, ordinal, places, out);
  }
  size.EndBody();
}

}  // namespace mapexport
