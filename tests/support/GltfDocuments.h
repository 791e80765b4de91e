// glTF documents made in tests, and the scenes that come of them.
#pragma once

#include <nlohmann/json.hpp>

#include "support/ImportedScenes.h"

namespace mapexport {

using nlohmann::json;

template <class Number>
std::string DataUri(const std::vector<Number>& numbers) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string uri = "data:application/octet-stream,";
  std::vector<unsigned char> bytes(numbers.size() * sizeof(Number));
  std::memcpy(bytes.data(), numbers.data(), bytes.size());
  for (const unsigned char byte : bytes) {
    uri += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return uri;
}

/// A document whose node 0 shows a triangle.
inline json Triangle() {
  json document = json::parse(R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],
    "nodes":[{"name":"A","mesh":0}],"meshes":[{"primitives":[{"attributes":{}}]}]})");
  return document;
}

/// Adds an accessor with a buffer of its own; returns its index.
template <class Number>
std::size_t Add(json& document, const std::vector<Number>& numbers, const char* type,
                std::size_t count, int componentType) {
  const std::size_t bytes = numbers.size() * sizeof(Number);
  document["buffers"].push_back({{"byteLength", bytes}, {"uri", DataUri(numbers)}});
  const std::size_t index = document["buffers"].size() - 1;
  document["bufferViews"].push_back({{"buffer", index}, {"byteLength", bytes}});
  document["accessors"].push_back(
      {{"bufferView", index}, {"count", count}, {"type", type}, {"componentType", componentType}});
  return index;
}

inline std::size_t Floats(json& document, const std::vector<float>& numbers, const char* type,
                          std::size_t components) {
  return Add(document, numbers, type, numbers.size() / components, 5126);
}

inline json& Primitive(json& document) {
  return document["meshes"][0]["primitives"][0];
}

inline json WithPositions(const std::vector<float>& positions = {0, 0, 0, 1, 0, 0, 0, 1, 0}) {
  json document = Triangle();
  const std::size_t accessor = Floats(document, positions, "VEC3", 3);
  Primitive(document)["attributes"]["POSITION"] = accessor;
  return document;
}

/// A chunk of a .glb file; `type` has four characters.
inline std::string Chunk(const std::string& type, const std::string& content) {
  const auto size = static_cast<std::uint32_t>(content.size());
  std::string bytes(sizeof size, ' ');
  std::memcpy(bytes.data(), &size, sizeof size);
  return bytes + type + content;
}

/// A .glb file with what follows its JSON chunk.
inline std::string Glb(const json& document, const std::string& rest) {
  const std::string chunks = Chunk("JSON", document.dump()) + rest;
  std::string bytes("glTF\2\0\0\0    ", 12);
  const auto size = static_cast<std::uint32_t>(bytes.size() + chunks.size());
  std::memcpy(bytes.data() + 8, &size, sizeof size);
  return bytes + chunks;
}

/// The document and the binary chunk of a .glb file.
inline std::pair<json, std::string> PartsOfGlb(const fs::path& path) {
  std::stringstream stream;
  stream << std::ifstream(path, std::ios::binary).rdbuf();
  const std::string bytes = stream.str();
  std::uint32_t size = 0;
  std::memcpy(&size, bytes.data() + 12, sizeof size);
  return {json::parse(bytes.substr(20, size)), bytes.substr(20 + size + 8)};
}

class GltfTest : public ImporterTest {
 protected:
  using ImporterTest::Import;
  ImportedScene Import(const json& document, const ImportOptions& options = {}) const {
    return ImportScene(Write("a.gltf", document.dump()), options);
  }
};

inline const SceneNode& First(const ImportedScene& imported) {
  return imported.scene.root.children.at(0);
}

inline std::vector<Point3> FirstVertices(const ImportedScene& imported) {
  return First(imported).mesh == nullptr ? std::vector<Point3>() : First(imported).mesh->verts;
}

/// "code count" of what is left out.
inline std::vector<std::string> LeftOutOf(const ImportedScene& imported) {
  std::vector<std::string> items;
  for (const Remark& item : imported.leftOut) {
    items.push_back(item.code.substr(9) + " " + std::to_string(item.count));
  }
  return items;
}

}  // namespace mapexport
