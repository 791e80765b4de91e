#include "modelreader/ReadMaterials.h"

#include "modelreader/SizedRecord.h"

namespace mapexport {

namespace {

constexpr std::uint32_t kTypeCode = 2;
constexpr std::uint32_t kVersion = 1;
/// A record with empty texts: size, type code, "Version", version, name; then the body.
constexpr std::uint64_t kLeastBytes = 4 + 4 + 12 + 4 + 5 + 5 + 12 + 48 + 4 + 1;

ModelColour ReadColour(ByteReader& in, const Place& place) {
  ModelColour colour;
  colour.r = in.F32(place);
  colour.g = in.F32(place);
  colour.b = in.F32(place);
  colour.a = in.F32(place);
  return colour;
}

bool ReadBool(ByteReader& in, const Place& place) {
  const std::uint8_t value = in.U8(place);
  if (value > 1) in.Problems().Add(ModelProblemCode::kBool, in.Offset() - 1, place, value);
  return value != 0;
}

void ReadBody(ByteReader& in, const Place& place, ModelMaterial& material) {
  material.textureName = in.Text(Place(place, "textureName"));
  material.scalar3 = in.F32(Place(place, "scalar3"));
  material.scalar2 = in.F32(Place(place, "scalar2"));
  material.modeValue = in.I32(Place(place, "modeValue"));
  material.ambient = ReadColour(in, Place(place, "ambient"));
  material.diffuse = ReadColour(in, Place(place, "diffuse"));
  material.specular = ReadColour(in, Place(place, "specular"));
  material.scalar1 = in.F32(Place(place, "scalar1"));
  material.twoSided = ReadBool(in, Place(place, "twoSided"));
}

}  // namespace

void ReadMaterials(ByteReader& in, std::vector<ModelMaterial>& materials,
                   std::optional<std::uint32_t>& count) {
  const Place list("materials");
  count = in.Count(kLeastBytes, list);
  for (std::uint32_t i = 0; i < *count; ++i) {
    const Place place = list.At(i);
    ModelMaterial& material = materials.emplace_back();
    ReadSizedRecord(
        in, place, [&] { material.header = ReadHeader(in, place, kTypeCode, kVersion); },
        [&] { ReadBody(in, place, material); },
        [&](std::uint64_t offset) {
          return i + 1 == *count ? offset == in.End() : RecordStandsAt(in, offset, kTypeCode);
        });
  }
}

}  // namespace mapexport
