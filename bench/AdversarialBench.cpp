// Inputs that are hard for the exporter's grids, each at a size and at twice that size:
//
//   AdversarialBench FOLDER
//
// Names end in "|1" and "|2"; those of which the definition asks for k * k comparisons have
// "(k * k)" before it. Beside them the literal definitions of two passes on a small level ("literal
// weld"), and the exporter's ("fast weld").
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "BenchHost.h"
#include "GatheredScene.h"
#include "HardGroups.h"
#include "HardScenes.h"
#include "Level.h"
#include "MeasuredRun.h"
#include "exporter/geometry/CleanVertexAttributes.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/WeldVertices.h"
#include "reference/LiteralCleanVertexAttributes.h"
#include "reference/LiteralWeldVertices.h"

namespace mapexport {
namespace {

constexpr float kDistance = 0.2f;
constexpr Point3 kCell{1000.0f, 1000.0f, 1000.0f};

template <typename Hard>
std::string NameOf(const Hard& hard, int times) {
  return hard.name + (hard.isForced ? " (k * k)|" : "|") + std::to_string(times);
}

void Register(const HardGroup& hard, int times, ExportModel& model) {
  const auto input = std::make_shared<std::unique_ptr<const GeometryGroup>>();
  RegisterRun(
      NameOf(hard, times),
      [=, &model] {
        if (!*input) {
          const auto size = hard.size * static_cast<std::size_t>(times);
          *input = std::make_unique<const GeometryGroup>(hard.make(size));
        }
        BenchHost::Begin(model);
        return **input;
      },
      [=](GeometryGroup& group) {
        hard.pass(group);
        return 0;
      });
}

/// A scene, and the host that gathers it.
struct SceneRun {
  explicit SceneRun(Scene made) : scene(std::move(made)), host(scene) {}

  Scene scene;
  HostScene host;
};

void Register(const HardScene& hard, int times) {
  const auto input = std::make_shared<std::unique_ptr<const SceneRun>>();
  RegisterRun(
      NameOf(hard, times),
      [=] {
        if (!*input) {
          const auto size = hard.size * static_cast<std::size_t>(times);
          *input = std::make_unique<const SceneRun>(hard.make(size));
        }
        auto model = std::make_unique<ExportModel>(0);
        BenchHost::Begin(*model);
        return model;
      },
      [=](std::unique_ptr<ExportModel>& model) {
        model->Gather((*input)->host.GetRootNode());
        return 0;
      });
}

void RegisterLiteral(GatheredScene& level) {
  const auto add = [&level](const std::string& name, void (*pass)(GeometryGroup&)) {
    RegisterRun(
        name,
        [&level] {
          BenchHost::Begin(level.model);
          return level.group;
        },
        [=](GeometryGroup& group) {
          pass(group);
          return 0;
        });
  };
  add("fast weld", [](GeometryGroup& group) {
    if (WeldVertices(group, kDistance)) RemoveDegenerateFaces(group);
  });
  add("literal weld", [](GeometryGroup& group) {
    LiteralWeldVertices(group, kDistance);
    LiteralRemoveDegenerateFaces(group);
  });
  add("fast clean", [](GeometryGroup& group) { CleanVertexAttributes(group, kCell); });
  add("literal clean", [](GeometryGroup& group) { LiteralCleanVertexAttributes(group, kCell); });
}

void Run(const std::string& folder) {
  SettleHeap();
  const BenchHost host(folder);
  const Scene scene = MakeLevel(kLevelSizes.front(), 1);
  GatheredScene level(scene);
  // The last of the materials that the hard groups refer to.
  level.model.materials[kHardMaterials - 1].name = "last";
  for (const int times : {1, 2}) {
    for (const HardGroup& hard : HardGroups()) Register(hard, times, level.model);
    for (const HardScene& hard : HardScenes()) Register(hard, times);
  }
  RegisterLiteral(level);
  benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 2) {
    std::fputs("usage: AdversarialBench FOLDER [--benchmark_...]\n", stderr);
    return 2;
  }
  try {
    mapexport::Run(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "AdversarialBench: %s\n", error.what());
    return 1;
  }
}
