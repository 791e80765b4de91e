#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>

#include "importer/threeds/Chunk3ds.h"
#include "importer/threeds/Read3ds.h"
#include "system/Ascii.h"

namespace mapexport {
namespace {

constexpr std::uint16_t kObject = 0x4000;
constexpr std::uint16_t kMesh = 0x4100;
constexpr std::uint16_t kFaces = 0x4120;
constexpr std::uint16_t kFaceMaterial = 0x4130;
constexpr std::uint16_t kSmoothing = 0x4150;
constexpr std::size_t kFaceBytes = 8;

/// Indices of materials by their names in small letters; the library compares them so.
using Indices = std::unordered_map<std::string, std::uint32_t>;

Indices IndicesOf(const std::vector<FileMaterial>& materials) {
  Indices indices;
  for (const FileMaterial& material : materials) {
    indices.try_emplace(LowerCase(material.name), static_cast<std::uint32_t>(indices.size()));
  }
  return indices;
}

void TakeMaterial(std::string_view content, const Indices& indices, FileFaces& mesh) {
  const std::size_t nameEnd = std::min(content.find('\0'), content.size());
  const auto index = indices.find(LowerCase(content.substr(0, nameEnd)));
  content.remove_prefix(std::min(nameEnd + 1, content.size()));
  const std::size_t count = NumberAt<std::uint16_t>(content, 0).value_or(0);
  for (std::size_t i = 1; i <= count && index != indices.end(); ++i) {
    const auto face = NumberAt<std::uint16_t>(content, 2 * i);
    if (face && *face < mesh.faces.size()) mesh.faces[*face].part = index->second;
  }
}

FileFaces FacesIn(std::string_view content, const Indices& indices) {
  FileFaces mesh;
  const std::size_t announced = NumberAt<std::uint16_t>(content, 0).value_or(0);
  const std::size_t count = std::min(announced, content.size() / kFaceBytes);
  mesh.faces.resize(count);
  content.remove_prefix(std::min(2 + count * kFaceBytes, content.size()));
  while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(content)) {
    if (chunk->id == kFaceMaterial) {
      TakeMaterial(chunk->content, indices, mesh);
    } else if (chunk->id == kSmoothing) {
      for (std::size_t i = 0; i < count; ++i) {
        mesh.faces[i].isFlat = NumberAt<std::uint32_t>(chunk->content, 4 * i).value_or(0) == 0;
      }
    }
  }
  return mesh;
}

/// Calls `visit` with the content of each chunk with that id in `list`.
void ForEach(std::string_view list, std::uint16_t id, const auto& visit) {
  while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(list)) {
    if (chunk->id == id) visit(chunk->content);
  }
}

}  // namespace

std::vector<FileFaces> Read3dsFaces(std::string_view bytes) {
  const Indices indices = IndicesOf(Read3dsMaterials(bytes));
  std::vector<FileFaces> meshes;
  const auto takeObject = [&](std::string_view object) {
    object.remove_prefix(std::min(object.find('\0'), object.size() - 1) + 1);  // its name
    ForEach(object, kMesh, [&](std::string_view mesh) {
      ForEach(mesh, kFaces,
              [&](std::string_view faces) { meshes.push_back(FacesIn(faces, indices)); });
    });
  };
  ForEach(bytes, kMain3ds, [&](std::string_view main) {
    ForEach(main, kEditor3ds, [&](std::string_view editor) {
      ForEach(editor, kObject, [&](std::string_view object) {
        if (!object.empty()) takeObject(object);
      });
    });
  });
  return meshes;
}

}  // namespace mapexport
