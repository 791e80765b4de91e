// The clean-up passes: time on a level and on the inputs that are hard for a grid, the ratio of the
// time at twice the size, and of the literal definitions' time on a small level.
#include <cmath>
#include <ctime>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "LevelGroup.h"
#include "RatioReporter.h"
#include "geometry/CleanVertexAttributes.h"
#include "geometry/RemoveDegenerateFaces.h"
#include "geometry/WeldVertices.h"
#include "reference/LiteralCleanVertexAttributes.h"
#include "reference/LiteralWeldVertices.h"

namespace mapexport {
namespace {

constexpr float kDistance = 0.2f;

using Make = std::function<GeometryGroup(std::size_t)>;
using Pass = std::function<void(GeometryGroup&)>;

// --- inputs for welding
// ---------------------------------------------------------------------------

/// `count` vertices, vertex i being at(i), without faces.
Make Vertices(const std::function<Point3(std::size_t)>& at) {
  return [at](std::size_t count) {
    GeometryGroup group;
    group.vertices.Reserve(count);
    for (std::size_t i = 0; i < count; ++i) group.vertices.Append(at(i));
    return group;
  };
}

/// `count` random vertices in a cube.
Make Cloud(float edge) {
  return [edge](std::size_t count) {
    std::mt19937 random(1);
    const auto next = [&] { return edge * (static_cast<float>(random()) * 0x1p-32f); };
    return Vertices([&](std::size_t) { return Point3{next(), next(), next()}; })(count);
  };
}

/// A cube of vertices, the nearest of them exactly `kDistance` apart.
GeometryGroup Lattice(std::size_t count) {
  const auto edge = static_cast<std::size_t>(std::cbrt(static_cast<double>(count)));
  const auto at = [](std::size_t i) { return static_cast<float>(i) * kDistance; };
  return Vertices([&](std::size_t i) {
    return Point3{at(i % edge), at(i / edge % edge), at(i / edge / edge)};
  })(count);
}

/// One place fills up first; then come places around it, too far from it and from each other.
GeometryGroup Satellites(std::size_t count) {
  return Vertices([=](std::size_t i) {
    if (i < count / 2) return Point3{};
    const double angle = static_cast<double>(i % 6) * 1.0471975512;
    return Point3{static_cast<float>(0.2001 * std::cos(angle)),
                  static_cast<float>(0.2001 * std::sin(angle)), 0.0f};
  })(count);
}

// --- inputs for both
// ------------------------------------------------------------------------------

/// `count` faces around vertex 0. The hub's attributes repeat after `attributes`, and are `step`
/// apart.
Make Fan(std::size_t attributes, float step) {
  return [=](std::size_t count) {
    GeometryGroup group;
    group.surfaceSets.resize(1);
    group.vertices.Append({});
    for (std::uint32_t i = 0; i <= count; ++i) {
      const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
      const float radius = static_cast<float>(count);
      group.vertices.Append({radius * std::cos(angle), radius * std::sin(angle), 0.0f});
    }
    for (std::uint32_t f = 0; f < count; ++f) {
      if (f < attributes) {
        VertexAttribute& hub = group.attributes.At(f + 1);
        hub.uvw.x = step * static_cast<float>(f);
        hub.material = 1;
      }
      GroupFace& face = group.faces.At(f);
      face.v = {0, f + 1, f + 2};
      face.a = {1 + f % static_cast<std::uint32_t>(attributes), 0, 0};
      face.surfaceSet = 0;
      group.surfaceSets[0].faces.Append(f);
    }
    return group;
  };
}

Make Level(Corners corners) {
  return [=](std::size_t vertices) { return LevelGroup(vertices, corners); };
}

// --- passes
// ---------------------------------------------------------------------------------------

Pass Weld(float distance) {
  return [=](GeometryGroup& group) {
    WeldVertices(group, distance);
    RemoveDegenerateFaces(group);
  };
}

void LiteralWeld(GeometryGroup& group) {
  LiteralWeldVertices(group, kDistance);
  LiteralRemoveDegenerateFaces(group);
}

/// A tenth of the group's bounds, as a grid of an earlier export can leave it.
Point3 CellSize(const GeometryGroup& group) {
  return (group.boundsMax - group.boundsMin) * 0.1f;
}

void Clean(GeometryGroup& group) {
  CleanVertexAttributes(group, CellSize(group));
}

void LiteralClean(GeometryGroup& group) {
  LiteralCleanVertexAttributes(group, CellSize(group));
}

/// Each run gets a fresh copy of the group; only the pass is timed, by the processor time it takes.
void Register(const std::string& name, const Make& make, const Pass& pass, std::size_t size) {
  const auto run = [=](benchmark::State& state) {
    const GeometryGroup input = make(size);
    for (auto _ : state) {
      GeometryGroup group = input;
      const std::clock_t start = std::clock();
      pass(group);
      state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
      benchmark::DoNotOptimize(group);
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime()->Unit(benchmark::kMillisecond);
}

struct Input {
  std::string name;
  Make make;
  Pass pass;
  std::size_t size;
};

std::vector<Input> Inputs() {
  const Make level = Level(Corners::kHard);
  return {
      {"weld, level", level, Weld(kDistance), 65000},
      {"weld, large level", level, Weld(kDistance), 500000},
      {"weld, all vertices equal", Cloud(0.0f), Weld(kDistance), 65000},
      {"weld, all in one cell", Cloud(kDistance), Weld(kDistance), 65000},
      {"weld, dense cloud", Cloud(4.0f), Weld(kDistance), 65000},
      {"weld, chain at the distance", Vertices([](std::size_t i) {
         return Point3{static_cast<float>(i) * kDistance, 0, 0};
       }),
       Weld(kDistance), 65000},
      {"weld, lattice at the distance", Lattice, Weld(kDistance), 64000},
      {"weld, satellites of one place", Satellites, Weld(kDistance), 65000},
      {"weld, far away", Cloud(1e30f), Weld(kDistance), 65000},
      {"weld, huge distance", level, Weld(1e12f), 65000},
      {"weld, infinite distance", level, Weld(std::numeric_limits<float>::infinity()), 65000},
      {"weld, fan", Fan(1, 0.0f), Weld(kDistance), 10000},
      {"clean, level", level, Clean, 65000},
      {"clean, large level", level, Clean, 500000},
      {"clean, all corners match", Level(Corners::kRepeated), Clean, 65000},
      {"clean, fan of two that match", Fan(2, 0.001f), Clean, 10000},
      {"clean, fan of a hundred in a row", Fan(100, 0.006f), Clean, 10000},
      {"clean, fan of attributes in a row (k * k)", Fan(1000000, 0.006f), Clean, 5000},
      {"clean, fan without a match", Fan(1000000, 0.02f), Clean, 10000},
  };
}

void RegisterAll(RatioReporter& reporter) {
  for (const Input& input : Inputs()) {
    const std::string once = input.name + ", " + std::to_string(input.size);
    const std::string twice = input.name + ", " + std::to_string(2 * input.size);
    Register(once, input.make, input.pass, input.size);
    Register(twice, input.make, input.pass, 2 * input.size);
    reporter.Compare("twice the size: " + input.name, twice, once);
  }
  constexpr std::size_t kSmall = 4000;
  const Make level = Level(Corners::kHard);
  Register("weld, small level", level, Weld(kDistance), kSmall);
  Register("weld, small level, literal", level, LiteralWeld, kSmall);
  Register("clean, small level", level, Clean, kSmall);
  Register("clean, small level, literal", level, LiteralClean, kSmall);
  reporter.Compare("literal : fast, weld", "weld, small level, literal", "weld, small level");
  reporter.Compare("literal : fast, clean", "clean, small level, literal", "clean, small level");
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  mapexport::RatioReporter reporter;
  mapexport::RegisterAll(reporter);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  return 0;
}
