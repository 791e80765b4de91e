// Any bytes as a scene file; a scene that was read must survive being written.

#include <string_view>

#include "fuzz/SceneRoundTrip.h"
#include "scene/HostScene.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  try {
    const MemoryFile file({reinterpret_cast<const char*>(data), size});
    const Scene scene = ReadSceneFile(file.Path());
    RequireRoundTrip(scene);
    const HostScene host(scene);
  } catch (const SceneError& error) {
    Require(std::string_view(error.what()).find('\n') == std::string_view::npos,
            "a refusal is one line");
  }
  return 0;
}
