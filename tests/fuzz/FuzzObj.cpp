// Any bytes as an OBJ file, and as an MTL file.

#include <cstdint>
#include <string_view>

#include "importer/ReadMtlFile.h"
#include "importer/ReadObjFile.h"
#include "scene/SceneError.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  MtlMaterials materials;
  ReadMtlFile(text, materials);
  try {
    ReadObjFile("fuzz.obj", text);
  } catch (const SceneError&) {
  }
  return 0;
}
