// How an engine reads a model file: prints what stands in the batches and the surface sets of one.
// engine_reader FILE
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <mapexport/ModelReader.h>

namespace reader = mapexport::reader;

int main(int argc, char** argv) {
  const std::string path = argc == 2 ? argv[1] : "";
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const bool isQob = path.size() > 4 && path.compare(path.size() - 4, 4, ".qob") == 0;

  reader::Model model;
  reader::Error error;
  const reader::Layout layout = isQob ? reader::Layout::kQob : reader::Layout::kKob;
  if (!model.Open(bytes.data(), bytes.size(), layout, &error)) {
    std::fprintf(stderr, "%s: offset %llu: %s: %s\n", path.c_str(),
                 static_cast<unsigned long long>(error.offset), error.field, ToText(error.fault));
    return 1;
  }

  std::vector<std::string> materials;
  for (const reader::Material& material : model.materials)
    materials.emplace_back(material.header.name);
  for (const reader::Group& group : model.groups) {
    for (const reader::Batch& batch : group.batches) {
      const auto material = static_cast<std::size_t>(batch.material);  // -1: no material
      const reader::Point first = group.vertices[batch.vertexIndices[0][0]];
      std::printf("%u triangles of %s, from (%g, %g, %g) on\n", batch.planes.size(),
                  batch.material < 0 ? "no material" : materials[material].c_str(), first.x,
                  first.y, first.z);
    }
    for (const reader::SurfaceSet& set : group.surfaceSets) {
      std::printf("%u faces with flags 0x%02x\n", set.faces.size(), set.flags);
    }
  }
}
