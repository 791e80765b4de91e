#include "exporter/modelwriter/WriteMaterials.h"

#include "exporter/modelwriter/RecordHeader.h"

namespace mapexport {
namespace {

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

}  // namespace mapexport
