#include "modelfile/WriteQobRecord.h"

#include "geometry/CollisionLists.h"
#include "geometry/RenderBatches.h"
#include "geometry/VoxelPartition.h"
#include "modelfile/IndexLimit.h"
#include "modelfile/RecordHeader.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

/// The place of each attribute in a batch's corner attribute list, the first one where it occurs
/// twice.
class CornerPlaces {
 public:
  explicit CornerPlaces(std::size_t attributeCount) : places_(attributeCount) {}

  void Take(const RenderBatch& batch) {
    ++batch_;
    for (std::uint32_t i = 0; i < batch.cornerAttributes.size(); ++i) {
      Place& place = places_[batch.cornerAttributes[i]];
      if (place.batch != batch_) place = {batch_, i};
    }
  }

  /// Of an attribute that the batch taken last has.
  std::uint32_t Of(std::uint32_t attribute) const { return places_[attribute].index; }

 private:
  struct Place {
    std::uint32_t batch = 0;  ///< which batch the index is of
    std::uint32_t index = 0;
  };
  std::vector<Place> places_;
  std::uint32_t batch_ = 0;  ///< batches taken so far
};

void WriteBatch(const GeometryGroup& group, const RenderBatch& batch, CornerPlaces& places,
                BinaryWriter& out) {
  places.Take(batch);
  out.I32(batch.material);
  out.Count(batch.faces.size());
  for (const std::uint32_t f : batch.faces) {
    const GroupFace& face = group.faces[f];
    const CollisionPlane plane = PlaneOf(face.normal, group.vertices[face.v[0]]);
    out.Point(plane.normal);
    out.F32(plane.d);
  }
  for (const std::uint32_t f : batch.faces) {
    for (const std::uint32_t v : group.faces[f].v) out.U16(v);
  }
  for (const std::uint32_t f : batch.faces) {
    for (const std::uint32_t a : group.faces[f].a) out.U16(places.Of(a));
  }
  out.Count(batch.cornerAttributes.size());
  for (const std::uint32_t a : batch.cornerAttributes) out.Point(group.attributes[a].normal);
  for (const std::uint32_t a : batch.cornerAttributes) {
    out.F32(group.attributes[a].uvw.x);
    out.F32(group.attributes[a].uvw.y);
  }
  for (const std::uint32_t a : batch.cornerAttributes) {
    const ColourRgba& colour = group.attributes[a].colour;
    out.F32(colour.r);
    out.F32(colour.g);
    out.F32(colour.b);
    out.F32(colour.a);
  }
}

}  // namespace

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
  out.Count(group.vertices.size());
  for (const Point3& vertex : group.vertices) out.Point(vertex);
  out.Count(group.batches.size());
  CornerPlaces places(group.attributes.size());
  for (std::size_t ordinal = 0; ordinal < group.batches.size(); ++ordinal) {
    const RenderBatch& batch = group.batches[ordinal];
    LogOverlongList(group, "corners of batch", ordinal, batch.cornerAttributes.size());
    WriteBatch(group, batch, places, out);
  }
  size.EndBody();
}

}  // namespace mapexport
