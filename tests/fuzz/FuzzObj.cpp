// Any bytes as an OBJ file and as a material library, and the scene that is made of the former.

#include <string>
#include <string_view>

#include "fuzz/SceneRoundTrip.h"
#include "importer/FinishScene.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/obj/ImportObj.h"
#include "importer/obj/ReadMtlFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  MtlMaterials materials;
  ReadMtlFile(text, materials);
  try {
    const MemoryFile file(text);
    ImportedScene imported;
    LeftOut leftOut;
    ImportObj(file.Path(), {}, imported, leftOut);
    FinishScene(imported, leftOut);
    RequireRoundTrip(imported.scene);
  } catch (const SceneError&) {
  }
  return 0;
}
