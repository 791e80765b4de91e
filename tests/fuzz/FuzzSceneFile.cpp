// Any bytes as a scene file, text or binary; a scene that was read must survive being written.

#include <string_view>

#include "fuzz/SceneRoundTrip.h"
#include "scene/BinarySceneFile.h"
#include "scene/HostScene.h"
#include "scene/JsonSyntax.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

Scene ReadAny(std::string_view bytes) {
  if (bytes.starts_with(kBinarySceneMagic)) {
    const MemoryFile file(bytes);
    return ReadBinaryScene(file.File(), "a");
  }
  // JSON and lists around a zero byte, for which a sound header is made.
  const std::size_t zero = bytes.find('\0');
  if (zero == bytes.npos) {
    Scene scene = ReadSceneFile(MemoryFile(bytes).Path());
    if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
    Require(CheckJsonDocument(bytes).defect == nullptr, "what is read is sound JSON");
    return scene;
  }
  BinarySceneHeader header{{}, kBinarySceneVersion, 0, zero, bytes.size() - zero - 1};
  kBinarySceneMagic.copy(header.magic, sizeof header.magic);
  std::string whole(reinterpret_cast<const char*>(&header), sizeof header);
  whole += bytes.substr(0, zero);
  whole.resize(AlignList(whole.size()));
  whole += bytes.substr(zero + 1);
  const MemoryFile file(whole);
  return ReadBinaryScene(file.File(), "a", {.mostBytes = 1 << 24});
}

}  // namespace
}  // namespace mapexport

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  try {
    const Scene scene = ReadAny({reinterpret_cast<const char*>(data), size});
    RequireRoundTrip(scene);
    const HostScene host(scene);
  } catch (const SceneError& error) {
    Require(std::string_view(error.what()).find('\n') == std::string_view::npos,
            "a refusal is one line");
  }
  return 0;
}
