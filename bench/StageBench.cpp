// Measures each stage of an export, and other libraries on the same work, on one level:
//
//   StageBench SIZE FOLDER
//
// SIZE is one of Level.h's; FOLDER holds the files of make_level and receives the outputs.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "BenchHost.h"
#include "Level.h"
#include "LevelStages.h"
#include "MeasuredRun.h"
#include "RebuildRuns.h"
#include "RivalRuns.h"
#include "StageRuns.h"

namespace mapexport {
namespace {

void Run(const std::string& size, const std::string& folder) {
  if (!FindLevelSize(size)) throw std::runtime_error("there is no size \"" + size + '"');
  SettleHeap();
  const BenchHost host(folder);
  LevelStages stages(size + ".scene.json");
  const auto context = [](const char* key, std::size_t count) {
    benchmark::AddCustomContext(key, std::to_string(count));
  };
  context("triangles", TriangleCount(stages.scene));
  context("vertices", stages.gathered.group.vertices.size());
  context("welded_vertices", stages.welded.vertices.size());
  RegisterStages(stages, size + ".scene.json");
  RegisterRebuilding(stages.scene);
  RegisterRivals(stages, size + ".obj");
  benchmark::RunSpecifiedBenchmarks();
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 3) {
    std::fputs("usage: StageBench SIZE FOLDER [--benchmark_...]\n", stderr);
    return 2;
  }
  try {
    mapexport::Run(argv[1], argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "StageBench: %s\n", error.what());
    return 1;
  }
}
