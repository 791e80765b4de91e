#include "modelreader/ReadBatch.h"

#include "modelreader/LittleEndian.h"
#include "modelreader/ReadLists.h"

namespace mapexport {

namespace {

constexpr std::uint64_t kTextureBytes = 8;
constexpr std::uint64_t kColourBytes = 16;
constexpr std::uint64_t kFaceBytes = kPlaneBytes + 2 * kTripleBytes;
constexpr std::uint64_t kCornerBytes = kPointBytes + kTextureBytes + kColourBytes;

std::int32_t ReadMaterialIndex(ByteReader& in, std::optional<std::uint32_t> materialCount,
                               const Place& place) {
  const std::int32_t material = in.I32(place);
  if (materialCount && (material < -1 || material >= std::int64_t{*materialCount})) {
    in.Problems().Add(ModelProblemCode::kMaterialIndex, in.Offset() - 4, place, material,
                      *materialCount);
  }
  return material;
}

/// A list of `count` entries at `place` was just begun with its count.
void CheckNotEmpty(ByteReader& in, std::uint32_t count, const Place& place) {
  if (count == 0) in.Problems().Add(ModelProblemCode::kBatchEmpty, in.Offset() - 4, place);
}

void ReadCorners(ByteReader& in, const Place& place, std::vector<ModelCorner>& corners) {
  const std::size_t count = corners.size();
  const std::byte* normals = in.Floats(count, 3, Place(place, "normals")).data();
  const std::byte* textures = in.Floats(count, 2, Place(place, "textureCoordinates")).data();
  const std::byte* colours = in.Floats(count, 4, Place(place, "colours")).data();
  for (std::size_t i = 0; i < count; ++i) {
    ModelCorner& corner = corners[i];
    corner.normal = PointAt(normals + i * kPointBytes);
    const std::byte* texture = textures + i * kTextureBytes;
    corner.u = F32At(texture);
    corner.v = F32At(texture + 4);
    const std::byte* colour = colours + i * kColourBytes;
    corner.colour = {F32At(colour), F32At(colour + 4), F32At(colour + 8), F32At(colour + 12)};
  }
}

/// A problem for each index of a list of triples, at `offset`, that is none into a list of `count`.
/// When `count` is above kModelIndexLimit, every index is possible.
template <typename TripleOf>
void CheckTriples(ByteReader& in, const ModelBatch& batch, TripleOf tripleOf, std::uint64_t count,
                  ModelProblemCode code, std::uint64_t offset, const Place& list) {
  for (std::size_t i = 0; i < batch.faces.size(); ++i) {
    const std::array<std::uint16_t, 3>& triple = tripleOf(batch.faces[i]);
    for (std::size_t k = 0; k < triple.size(); ++k) {
      if (triple[k] < count) continue;
      in.Problems().Add(code, offset + i * kTripleBytes + 2 * k, list.At(i), k, triple[k], count);
    }
  }
}

}  // namespace

void ReadBatch(ByteReader& in, const BatchSurroundings& around, const Place& place,
               ModelBatch& batch) {
  batch.material = ReadMaterialIndex(in, around.materialCount, Place(place, "material"));

  const Place facesPlace(place, "faces");
  const std::uint32_t faceCount = around.facesAreIndexed
                                      ? ReadIndexedCount(in, kFaceBytes, facesPlace)
                                      : in.Count(kFaceBytes, facesPlace);
  CheckNotEmpty(in, faceCount, facesPlace);
  const Place verticesPlace(place, "vertexIndices");
  const Place cornersPlace(place, "cornerIndices");
  const std::byte* planes = in.Floats(faceCount, 4, Place(place, "planes")).data();
  const std::uint64_t verticesOffset = in.Offset();
  const std::byte* vertices = in.Bytes(faceCount * kTripleBytes, verticesPlace).data();
  const std::uint64_t cornersOffset = in.Offset();
  const std::byte* corners = in.Bytes(faceCount * kTripleBytes, cornersPlace).data();
  batch.faces.resize(faceCount);
  for (std::size_t i = 0; i < faceCount; ++i) {
    batch.faces[i] = {PlaneAt(planes + i * kPlaneBytes), TripleAt(vertices + i * kTripleBytes),
                      TripleAt(corners + i * kTripleBytes)};
  }
  CheckTriples(
      in, batch, [](const ModelBatchFace& face) -> auto& { return face.vertices; },
      around.vertexCount, ModelProblemCode::kVertexIndex, verticesOffset, verticesPlace);

  const Place cornerListPlace(place, "corners");
  const std::uint32_t cornerCount = ReadIndexedCount(in, kCornerBytes, cornerListPlace);
  CheckNotEmpty(in, cornerCount, cornerListPlace);
  batch.corners.resize(cornerCount);
  CheckTriples(
      in, batch, [](const ModelBatchFace& face) -> auto& { return face.corners; },
      batch.corners.size(), ModelProblemCode::kCornerIndex, cornersOffset, cornersPlace);
  ReadCorners(in, place, batch.corners);
}

}  // namespace mapexport
