#include "exporter/modelwriter/WriteModelFile.h"

#include <cstdint>
#include <string_view>

#include "exporter/modelwriter/RecordHeader.h"

namespace mapexport {
namespace {

constexpr std::uint32_t kGeometryChunk = 7;
constexpr std::uint32_t kMaterialChunk = 8;

/// Begins a chunk: the size of its body, which EndBody fills in, its id and its name.
SizeField BeginChunk(BinaryWriter& out, std::uint32_t id, std::string_view name) {
  SizeField size(out);
  out.U32(id);
  out.LString(name);
  size.BeginBody();
  return size;
}

void WriteColour(BinaryWriter& out, const ColourRgba& colour) {
  out.F32(colour.r);
  out.F32(colour.g);
  out.F32(colour.b);
  out.F32(colour.a);
}

}  // namespace

void WriteMaterials(const MaterialsList& materials, BinaryWriter& out) {
  out.Count(materials.Count());
  for (const MaterialRecord& material : materials.Records()) {
    SizeField size(out);
    WriteRecordHeader(out, material.typeCode, material.version, material.name);
    size.BeginBody();
    out.LString(material.textureName.View());
    out.F32(material.scalar3);
    out.F32(material.scalar2);
    out.I32(material.modeValue);
    WriteColour(out, material.ambient);
    WriteColour(out, material.diffuse);
    WriteColour(out, material.specular);
    out.F32(material.scalar1);
    out.U8(material.twoSided ? 1 : 0);
    size.EndBody();
  }
}

SizeField BeginModelFile(const MaterialsList& materials, std::size_t groupCount,
                         BinaryWriter& out) {
  out.LString("BeginModel");
  SizeField materialSize = BeginChunk(out, kMaterialChunk, "MaterialList");
  WriteMaterials(materials, out);
  materialSize.EndBody();
  const SizeField geometrySize = BeginChunk(out, kGeometryChunk, "GeometryList");
  out.Count(groupCount);
  return geometrySize;
}

void EndModelFile(SizeField geometrySize, BinaryWriter& out) {
  geometrySize.EndBody();
  out.LString("EndModel");
}

}  // namespace mapexport
