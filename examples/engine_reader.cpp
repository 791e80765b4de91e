// How an engine reads a model file: makes a vertex buffer and an index buffer of each batch, and
// prints how large they are and what the surface sets hold, group by group.
// engine_reader FILE
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include <mapexport/ModelReader.h>

namespace reader = mapexport::reader;

namespace {

struct Vertex {
  reader::Point position;
  reader::Point normal;
  reader::TextureCoordinates texture;
  reader::Colour colour;
};

struct Buffers {
  std::vector<Vertex> vertices;
  std::vector<std::uint16_t> indices;  ///< three for each triangle
};

Buffers BuffersOf(const reader::Group& group, const reader::Batch& batch) {
  Buffers buffers;
  std::unordered_map<std::uint16_t, std::uint16_t> places;  // of vertices in the vertex buffer
  for (std::uint32_t i = 0; i < 3 * batch.vertexIndices.size(); ++i) {
    const std::uint16_t vertex = batch.vertexIndices[i / 3][i % 3];
    const std::uint16_t corner = batch.cornerIndices[i / 3][i % 3];
    const auto next = static_cast<std::uint16_t>(buffers.vertices.size());
    const auto [place, isNew] = places.try_emplace(vertex, next);
    if (isNew) {
      buffers.vertices.push_back({group.vertices[vertex], batch.normals[corner],
                                  batch.textureCoordinates[corner], batch.colours[corner]});
    }
    buffers.indices.push_back(place->second);
  }
  return buffers;
}

/// The place as far as it is known: "groups[0].batches[2].material".
std::string PlaceOf(const reader::Error& error) {
  std::string place;
  const auto add = [&place](const char* list, std::int32_t index) {
    if (index >= 0) place += std::string(list) + '[' + std::to_string(index) + "].";
  };
  add("materials", error.material);
  add("groups", error.group);
  add("batches", error.batch);
  add("surfaceSets", error.surfaceSet);
  return place + error.field;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string path = argc == 2 ? argv[1] : "";
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};

  reader::Model model;
  reader::Error error;
  if (!model.Open(bytes.data(), bytes.size(), reader::LayoutOfName(path), &error)) {
    std::fprintf(stderr, "%s: offset %llu: %s: %s\n", path.c_str(),
                 static_cast<unsigned long long>(error.offset), PlaceOf(error).c_str(),
                 ToText(error.fault));
    return 1;
  }

  // Batches look their materials up, so those are put where an index finds them at once.
  const std::vector<reader::Material> materials(model.materials.begin(), model.materials.end());
  // A large level is divided into many groups, each with indices into its own lists.
  for (const reader::Group& group : model.groups) {
    std::printf("group %s\n", std::string(group.header.name).c_str());
    for (const reader::Batch& batch : group.batches) {
      const Buffers buffers = BuffersOf(group, batch);
      std::string look = "no material";
      if (batch.material >= 0) {
        const reader::Material& material = materials[static_cast<std::size_t>(batch.material)];
        look = std::string(material.header.name);
        if (material.HasTexture()) look += " (" + std::string(material.textureName) + ')';
      }
      std::printf("%zu triangles of %s, %zu vertices\n", buffers.indices.size() / 3, look.c_str(),
                  buffers.vertices.size());
    }
    for (const reader::SurfaceSet& set : group.surfaceSets) {
      std::printf("%u faces with flags 0x%02x\n", set.faces.size(), set.flags);
    }
  }
}
