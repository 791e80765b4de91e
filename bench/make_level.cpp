// Writes a level in the formats that whole exports are measured on:
//
//   make_level SIZE FOLDER [SEED]
//
// makes FOLDER/SIZE.scene.json, .obj with .mtl, and .glb. SIZE is one of Level.h's, or "box" for a
// scene of twelve triangles. Of that and of levels of more than two million only .scene.json.
#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

#include "Level.h"
#include "LevelShapes.h"
#include "WriteGlb.h"
#include "WriteObj.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

Scene BoxScene() {
  Scene scene;
  SceneNode node;
  node.name = "Box";
  node.object = SceneObject::kMesh;
  node.mesh = std::make_shared<const Mesh>(Box({100.0f, 100.0f, 100.0f}));
  scene.root.children.push_back(std::move(node));
  return scene;
}

void WriteFile(const std::string& path, const std::function<void(std::ostream&)>& write) {
  std::ofstream out(path, std::ios::binary);
  write(out);
  out.close();
  if (!out) throw std::runtime_error(path + ": can't be written");
}

void Make(const std::string& name, const std::string& folder, std::uint32_t seed) {
  const std::string path = folder + '/' + name;
  const std::optional<LevelSize> size = FindLevelSize(name);
  if (!size && name != "box") throw std::runtime_error("there is no size \"" + name + '"');
  const Scene scene = size ? MakeLevel(*size, seed) : BoxScene();
  WriteFile(path + ".scene.json", [&](std::ostream& out) { WriteSceneFile(scene, out); });
  WriteFile(path + ".scene.bin", [&](std::ostream& out) { WriteBinaryScene(scene, out); });
  constexpr std::size_t kMostInAllFormats = 2'000'000;
  if (size && TriangleCount(scene) <= kMostInAllFormats) {
    WriteFile(path + ".obj", [&](std::ostream& out) { WriteObj(scene, name + ".mtl", out); });
    WriteFile(path + ".mtl", [&](std::ostream& out) { WriteMtl(scene, out); });
    WriteFile(path + ".glb", [&](std::ostream& out) { WriteGlb(scene, out); });
  }
  std::printf("%zu\n", TriangleCount(scene));
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fputs("usage: make_level SIZE FOLDER [SEED]; prints the number of triangles\n", stderr);
    return 2;
  }
  try {
    std::uint32_t seed = 1;
    if (argc == 4) {
      const std::string text = argv[3];
      const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
      if (error != std::errc() || end != text.data() + text.size()) {
        throw std::runtime_error("the seed \"" + text + "\" is no number from 0 to 4294967295");
      }
    }
    mapexport::Make(argv[1], argv[2], seed);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_level: %s\n", error.what());
    return 1;
  }
}
