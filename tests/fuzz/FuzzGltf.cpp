// Any bytes as a glTF file, and the scene that is made of it.
//
// Without Draco streams: a few damaged bytes can keep their library busy for half a minute. In the
// program the time limit ends that; scripts/damage.sh tries it.

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
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (text.find("DRACO") != std::string_view::npos) return 0;
  const MemoryFile bytes(text);
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
