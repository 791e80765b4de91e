#include "exporter/modelwriter/WriteModelFile.h"

#include <cstdint>
#include <string_view>

#include "exporter/modelwriter/WriteMaterials.h"

namespace mapexport {
namespace {

constexpr std::uint32_t kGeometryChunk = 7;
constexpr std::uint32_t kMaterialChunk = 8;

/// Writes a chunk: the size of its body, its id, its name, and the body, which `writeBody` writes.
template <typename WriteBody>
void WriteChunk(BinaryWriter& out, std::uint32_t id, std::string_view name,
                const WriteBody& writeBody) {
  SizeField size(out);
  out.U32(id);
  out.LString(name);
  size.BeginBody();
  writeBody();
  size.EndBody();
}

}  // namespace

void WriteModelFile(const MaterialsList& materials, const GroupList& groups,
                    WriteGroupRecord* writeGroup, std::ostream& stream) {
  BinaryWriter out(stream);
  out.LString("BeginModel");
  WriteChunk(out, kMaterialChunk, "MaterialList", [&] { WriteMaterials(materials, out); });
  WriteChunk(out, kGeometryChunk, "GeometryList", [&] {
    out.Count(groups.Count());
    for (std::size_t i = 0; i < groups.Count(); ++i) writeGroup(*groups.At(i), out);
  });
  out.LString("EndModel");
}

}  // namespace mapexport
