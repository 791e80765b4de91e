// Any bytes as a glTF file, and the scene that is made of it.

#include <exception>
#include <string_view>

#include "fuzz/SceneRoundTrip.h"
#include "importer/FinishScene.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/gltf/GltfFile.h"
#include "importer/gltf/ImportGltf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  const MemoryFile bytes({reinterpret_cast<const char*>(data), size});
  ImportedScene imported;
  LeftOut leftOut;
  try {
    const GltfFile file(bytes.Path());
    if (file.IsVersion1()) return 0;
    ImportGltf(file, {}, imported, leftOut);
  } catch (const std::exception& error) {
    Require(std::string_view(error.what()).find('\n') == std::string_view::npos,
            "a refusal is one line");
    return 0;
  }
  FinishScene(imported, leftOut);
  RequireRoundTrip(imported.scene);
  return 0;
}
