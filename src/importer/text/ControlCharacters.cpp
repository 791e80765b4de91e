#include "importer/text/ControlCharacters.h"

#include <cstddef>
#include <string>

#include "scene/Scene.h"

namespace mapexport {
namespace {

/// How many bytes of the valid UTF-8 `text` a control character takes at `at`; 0: there is none.
std::size_t ControlBytes(const std::string& text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte < 0x20 || byte == 0x7F) return 1;
  const bool isC1 =
      byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
  return isC1 ? 2 : 0;
}

std::uint64_t Blank(std::string& text) {
  std::uint64_t count = 0;
  std::size_t kept = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = ControlBytes(text, at);
    text[kept++] = bytes == 0 ? text[at] : ' ';
    at += bytes == 0 ? 1 : bytes;
    if (bytes != 0) ++count;
  }
  text.resize(kept);
  return count;
}

std::uint64_t BlankIn(SceneNode& node) {
  std::uint64_t count = Blank(node.name);
  for (SceneNode& child : node.children) count += BlankIn(child);
  return count;
}

}  // namespace

std::uint64_t BlankControlCharacters(Scene& scene) {
  std::uint64_t count = BlankIn(scene.root);
  for (SceneMaterial& material : scene.materials) {
    count += Blank(material.name);
    if (material.diffuseMap) count += Blank(material.diffuseMap->file);
  }
  return count;
}

}  // namespace mapexport
