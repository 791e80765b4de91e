// Whole exports: a level at the first layout's ceiling (about 65,000 vertices), and one twice as
// large, with all passes on; beside it reading the level's scene file and checking what came out.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include "RatioReporter.h"
#include "modelreader/ReadModelFile.h"
#include "plugin/LibraryEntry.h"
#include "plugin/MapExporter.h"
#include "plugin/Resources.h"
#include "scene/HostScene.h"
#include "scene/SceneFile.h"
#include "support/TestSystem.h"

namespace mapexport {
namespace {

constexpr int kPatchQuads = 16;
constexpr int kMaterials = 8;

/// A patch of hilly ground, 800 units wide, whose border vertices lie on its neighbours'.
std::shared_ptr<const Mesh> Patch(int px, int py) {
  auto mesh = std::make_shared<Mesh>();
  for (int i = 0; i <= kPatchQuads; ++i) {
    for (int j = 0; j <= kPatchQuads; ++j) {
      const auto x = static_cast<float>((px * kPatchQuads + i) * 50);
      const auto y = static_cast<float>((py * kPatchQuads + j) * 50);
      mesh->verts.push_back({x, y, 40 * std::sin(x / 300) + 30 * std::cos(y / 200)});
      mesh->tVerts.push_back({static_cast<float>(i) / 4, static_cast<float>(j) / 4, 0});
    }
  }
  for (std::uint32_t i = 0; i < kPatchQuads; ++i) {
    for (std::uint32_t j = 0; j < kPatchQuads; ++j) {
      const std::uint32_t a = i * (kPatchQuads + 1) + j;
      const std::uint32_t c = a + kPatchQuads + 1;
      const std::uint32_t smoothing = (px + py) % 2 == 0 ? 0 : 2;
      mesh->faces.push_back({{a, c, a + 1}, smoothing, 0});
      mesh->faces.push_back({{a + 1, c, c + 1}, smoothing, 0});
      mesh->tvFace.push_back({{a, c, a + 1}});
      mesh->tvFace.push_back({{a + 1, c, c + 1}});
    }
  }
  return mesh;
}

Scene Level(int patches) {
  Scene scene;
  for (int m = 0; m < kMaterials; ++m) {
    SceneMaterial material;
    material.name = "Material " + std::to_string(m);
    material.diffuseMap = SceneTexture{true, "texture" + std::to_string(m) + ".bmp", {}};
    scene.materials.push_back(material);
  }
  const int across = static_cast<int>(std::lround(std::sqrt(patches)));
  for (int p = 0; p < patches; ++p) {
    SceneNode node;
    node.name = "Patch " + std::to_string(p);
    node.material = p % kMaterials;
    node.object = SceneObject::kMesh;
    node.mesh = Patch(p / across, p % across);
    scene.root.children.push_back(std::move(node));
  }
  return scene;
}

std::string Name(const char* what, int patches) {
  const int vertices = patches * (kPatchQuads + 1) * (kPatchQuads + 1);
  return std::string(what) + ", " + std::to_string(vertices) + " vertices";
}

void RegisterLevel(int patches) {
  const auto scene = std::make_shared<const Scene>(Level(patches));
  for (const char* layout : {"qob", "kob"}) {
    const std::string file = std::string("level.") + layout;
    benchmark::RegisterBenchmark(Name(layout, patches).c_str(), [scene,
                                                                 file](benchmark::State& state) {
      HostScene host(*scene);
      MapExporter exporter;
      for (auto _ : state) {
        exporter.DoExport(file.c_str(), nullptr, &host, true);
      }
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark(Name("check kob", patches).c_str(), [](benchmark::State& state) {
    for (auto _ : state) {
      ReadModelFile("level.kob", ModelLayout::kKob);
    }
  })->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(Name("read scene", patches).c_str(), [scene](
                                                                        benchmark::State& state) {
    std::ofstream out("level.scene.json");
    WriteSceneFile(*scene, out);
    out.close();
    for (auto _ : state) ReadSceneFile("level.scene.json");
  })->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  using namespace mapexport;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  std::string folder = (std::filesystem::temp_directory_path() / "exportbench-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    std::perror(folder.c_str());
    return 1;
  }
  std::filesystem::current_path(folder);

  TestSystem system;
  const HINSTANCE module = AttachModule(kResources);
  LibraryEntry(module);
  RatioReporter reporter;
  constexpr int kCeiling = 225;  // patches
  for (const int patches : {kCeiling, 2 * kCeiling}) RegisterLevel(patches);
  for (const char* what : {"qob", "kob", "check kob", "read scene"}) {
    reporter.Compare(std::string("twice the size: ") + what, Name(what, 2 * kCeiling),
                     Name(what, kCeiling));
  }
  reporter.Compare("read scene : export to qob", Name("read scene", kCeiling),
                   Name("qob", kCeiling));
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  DetachModule(module);
  std::filesystem::current_path("/");
  std::filesystem::remove_all(folder);
  return 0;
}
