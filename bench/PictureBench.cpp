// Times the drawing of a million triangles: a usual level, and what is hard for a rasteriser. The
// label is a hash of the pixels.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "picture/Camera.h"
#include "picture/DrawModel.h"

namespace mapexport {
namespace {

constexpr std::size_t kTriangles = 1'000'000;
constexpr std::size_t kInGroup = 20'000;  ///< with three vertices each, below the limit of a list
constexpr double kWide = 100;
constexpr double kDouble = static_cast<double>(kTriangles);

using Corners = std::array<ModelPoint, 3>;
using Maker = std::function<Corners(std::size_t index)>;

ModelPoint Point(double x, double y, double z) {
  return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

/// Triangles that show their front to the views from above and from the front right.
ModelFile MakeModel(const Maker& maker) {
  ModelFile model;
  for (std::size_t i = 0; i < kTriangles; ++i) {
    if (i % kInGroup == 0) model.groups.emplace_back().batches.resize(1);
    ModelGroup& group = model.groups.back();
    const auto first = static_cast<std::uint16_t>(group.vertices.size());
    const auto [a, b, c] = maker(i);
    group.vertices.insert(group.vertices.end(), {a, b, c});
    ModelBatchFace& face = group.batches[0].faces.emplace_back();
    const Vector ab{double{b.x} - a.x, double{b.y} - a.y, double{b.z} - a.z};
    const Vector ac{double{c.x} - a.x, double{c.y} - a.y, double{c.z} - a.z};
    const double towards =
        ab.y * ac.z - ab.z * ac.y - (ab.z * ac.x - ab.x * ac.z) + (ab.x * ac.y - ab.y * ac.x);
    const auto second = static_cast<std::uint16_t>(towards > 0 ? 2 : 1);
    face.vertices = {first, static_cast<std::uint16_t>(first + second),
                     static_cast<std::uint16_t>(first + 3 - second)};
    face.plane.normal = {0, 0, 1};
  }
  return model;
}

/// Half of a square at a height; two make a layer.
Corners Layer(std::size_t index, double height) {
  const ModelPoint from = Point(0, 0, height);
  const ModelPoint to = Point(kWide, kWide, height);
  if (index % 2 == 0) return {from, Point(kWide, 0, height), to};
  return {from, to, Point(0, kWide, height)};
}

Corners Ground(std::size_t index) {
  const std::size_t edge = 707;
  const auto at = [](std::size_t x, std::size_t y) {
    const auto column = static_cast<double>(x);
    const auto row = static_cast<double>(y);
    return Point(column / 7, row / 7, 5 * std::sin(column / 30) * std::cos(row / 40));
  };
  const std::size_t x = index / 2 % edge;
  const std::size_t y = index / 2 / edge;
  if (index % 2 == 0) return {at(x, y), at(x + 1, y), at(x + 1, y + 1)};
  return {at(x, y), at(x + 1, y + 1), at(x, y + 1)};
}

Corners Random(std::size_t index, double narrow) {
  std::minstd_rand random(static_cast<unsigned>(index + 1));
  random.discard(3);
  std::uniform_real_distribution<double> place(0, kWide);
  Corners corners;
  for (ModelPoint& corner : corners) {
    const double x = place(random);
    const double y = place(random);
    corner = Point(x, y, place(random));
  }
  if (narrow > 0) {
    corners[2] = {corners[1].x, corners[1].y + static_cast<float>(narrow), corners[1].z};
  }
  return corners;
}

/// Blades around an axis, side by side.
Corners Blade(std::size_t index) {
  const double part = 2 * std::numbers::pi / kDouble;
  const double turn = static_cast<double>(index) * part;
  const auto rim = [&](double at) { return Point(kWide * std::cos(at), kWide * std::sin(at), 0); };
  return {Point(0, 0, 10), rim(turn), rim(turn + part)};
}

struct Case {
  std::string name;
  Maker maker;
};

std::vector<Case> Cases() {
  const double step = kWide / kDouble;
  const auto up = [step](std::size_t i) {
    const std::size_t layer = i / 2;
    return static_cast<double>(layer) * step * 2;
  };
  return {
      {"usual", Ground},
      {"stack-upwards", [up](std::size_t i) { return Layer(i, up(i)); }},
      {"stack-downwards", [up](std::size_t i) { return Layer(i, kWide - up(i)); }},
      {"stack-of-triangles", [up](std::size_t i) { return Layer(0, up(i)); }},
      {"equal-layers", [](std::size_t i) { return Layer(i, 0); }},
      {"soup", [](std::size_t i) { return Random(i, 0); }},
      {"needles", [](std::size_t i) { return Random(i, 0.01); }},
      {"fan", Blade},
  };
}

void Measure(benchmark::State& state, const Maker& maker, std::size_t view) {
  const ModelFile model = MakeModel(maker);
  for ([[maybe_unused]] auto _ : state) {
    Picture picture = DrawModel(model, PageSpace(model, 2), FaceColours(model, Colouring::kBatch),
                                kNamedViews.at(view), {1200, 800});
    std::uint64_t hash = 14695981039346656037U;
    for (int i = 0; i < 1200 * 800; ++i) {
      for (const std::uint8_t channel : picture.Row(0)[i]) hash = (hash ^ channel) * 1099511628211U;
    }
    state.SetLabel(std::to_string(hash));
  }
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  using namespace mapexport;
  benchmark::Initialize(&argc, argv);
  const std::array<const char*, 4> views{"iso", "top", "front", "side"};
  for (const Case& each : Cases()) {
    for (std::size_t view = 0; view < views.size(); ++view) {
      benchmark::RegisterBenchmark(
          (each.name + '/' + views[view]).c_str(),
          [each, view](benchmark::State& state) { Measure(state, each.maker, view); })
          ->Iterations(1)
          ->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
