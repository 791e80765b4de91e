// Writes scene files in binary: the tree once, to learn its size and the places of the lists, then
// the lists.
#include <algorithm>
#include <cstddef>
#include <ostream>
#include <span>
#include <sstream>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "scene/BinarySceneFile.h"
#include "scene/SceneFile.h"
#include "scene/WriteSceneTree.h"
#include "system/JsonStream.h"

namespace mapexport {
namespace {

/// Zeros from the end of `bytes` to where the next list begins.
void Pad(std::uint64_t bytes, std::ostream& out) {
  static constexpr char kZeros[kListAlignment] = {};
  out.write(kZeros, static_cast<std::streamsize>(AlignList(bytes) - bytes));
}

/// The lists of all meshes, in the order of their writing.
class ListBlock {
 public:
  /// Writes where the lists of `mesh` will be.
  void WritePlaces(JsonStream& json, const Mesh& mesh) {
    const auto [entry, isNew] = begins_.try_emplace(&mesh, size_);
    if (isNew) meshes_.push_back(&mesh);
    std::uint64_t at = entry->second;
    json.Open('{', JsonStream::kOnLines);
    if (!mesh.verts.empty()) WritePlace(json, "vertices", at, mesh.verts);
    if (!mesh.faces.empty()) WritePlace(json, "faces", at, mesh.faces);
    if (!mesh.tVerts.empty()) {
      WritePlace(json, "textureVertices", at, mesh.tVerts);
      WritePlace(json, "textureFaces", at, mesh.tvFace);
    }
    json.Close('}');
    if (isNew) size_ = at;
  }

  std::uint64_t Size() const { return size_; }

  void WriteLists(std::ostream& out) const {
    for (const Mesh* const mesh : meshes_) {
      WriteWords(mesh->verts, out);
      WriteWords(mesh->faces, out);
      WriteWords(mesh->tVerts, out);
      if (!mesh->tVerts.empty()) WriteWords(mesh->tvFace, out);
    }
  }

 private:
  template <class Element>
  static void WritePlace(JsonStream& json, std::string_view name, std::uint64_t& at,
                         const std::vector<Element>& list) {
    json.Key(name);
    json.Open('{', JsonStream::kOnOneLine);
    json.Key("offset");
    json.Number(at);
    json.Key("count");
    json.Number(list.size());
    json.Close('}');
    at = AlignList(at + list.size() * sizeof(Element));
  }

  template <class Element>
  static void WriteWords(const std::vector<Element>& list, std::ostream& out) {
    constexpr std::size_t kBlock = 4096;
    std::vector<Element> block;
    for (std::size_t at = 0; at < list.size(); at += block.size()) {
      const auto first = list.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t count = std::min(kBlock, list.size() - at);
      block.assign(first, first + static_cast<std::ptrdiff_t>(count));
      if constexpr (std::is_same_v<Element, Face>) {
        for (Face& face : block) face.flags = face.MatID();
      }
      ToFileOrder(std::span(reinterpret_cast<std::uint32_t*>(block.data()),
                            block.size() * (sizeof(Element) / sizeof(std::uint32_t))));
      out.write(reinterpret_cast<const char*>(block.data()),
                static_cast<std::streamsize>(block.size() * sizeof(Element)));
    }
    Pad(list.size() * sizeof(Element), out);
  }

  std::unordered_map<const Mesh*, std::uint64_t> begins_;
  std::vector<const Mesh*> meshes_;
  std::uint64_t size_ = 0;
};

std::uint64_t ListBytes(const SceneNode& node) {
  std::uint64_t bytes = 0;
  if (node.mesh != nullptr) {
    const Mesh& mesh = *node.mesh;
    bytes = mesh.verts.size() * sizeof(Point3) + mesh.faces.size() * sizeof(Face) +
            mesh.tVerts.size() * sizeof(Point3) + mesh.tvFace.size() * sizeof(TVFace);
  }
  for (const SceneNode& child : node.children) bytes += ListBytes(child);
  return bytes;
}

}  // namespace

std::uint64_t ListBytes(const Scene& scene) {
  return ListBytes(scene.root);
}

void WriteBinaryScene(const Scene& scene, std::ostream& out) {
  ListBlock lists;
  std::ostringstream tree;
  const auto writePlaces = [&](JsonStream& json, const Mesh& mesh) {
    lists.WritePlaces(json, mesh);
  };
  WriteSceneTree(scene, writePlaces, tree);
  const std::string_view json = tree.view();
  BinarySceneHeader header{{}, kBinarySceneVersion, 0, json.size(), lists.Size()};
  kBinarySceneMagic.copy(header.magic, sizeof header.magic);
  ToFileOrder(header);
  out.write(reinterpret_cast<const char*>(&header), sizeof header);
  out << json;
  Pad(sizeof header + json.size(), out);
  lists.WriteLists(out);
}

}  // namespace mapexport
