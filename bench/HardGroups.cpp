#include "HardGroups.h"

#include <cmath>
#include <limits>
#include <random>

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/CleanVertexAttributes.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/RenderBatches.h"
#include "exporter/geometry/VoxelPartition.h"
#include "exporter/geometry/WeldVertices.h"
#include "exporter/plugin/ExportModel.h"

namespace mapexport {
namespace {

constexpr float kWeldDistance = 0.2f;
constexpr std::size_t kAllDifferent = std::numeric_limits<std::uint32_t>::max();

using Make = std::function<GeometryGroup(std::size_t)>;
using Pass = std::function<void(GeometryGroup&)>;

// --- groups ------------------------------------------------------------------------------------

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

/// A cube of vertices; the nearest are exactly the distance apart.
GeometryGroup Lattice(std::size_t count) {
  const auto edge = static_cast<std::size_t>(std::cbrt(static_cast<double>(count)));
  const auto at = [](std::size_t i) { return static_cast<float>(i) * kWeldDistance; };
  return Vertices([&](std::size_t i) {
    return Point3{at(i % edge), at(i / edge % edge), at(i / edge / edge)};
  })(count);
}

/// One place fills up first; then follow places around it, too far from it and from each other.
GeometryGroup Satellites(std::size_t count) {
  return Vertices([=](std::size_t i) {
    if (i < count / 2) return Point3{};
    const double angle = static_cast<double>(i % 6) * 1.0471975512;
    return Point3{static_cast<float>(0.2001 * std::cos(angle)),
                  static_cast<float>(0.2001 * std::sin(angle)), 0.0f};
  })(count);
}

/// `count` faces around vertex 0. The hub's attributes repeat after `attributes` faces, and are
/// `step` apart.
Make Fan(std::size_t attributes, float step) {
  return [=](std::size_t count) {
    GeometryGroup group;
    group.surfaceSets.resize(1);
    group.attributes.Append({});
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
    const float radius = static_cast<float>(count);
    group.boundsMin = {-radius, -radius, 0.0f};
    group.boundsMax = {radius, radius, 0.0f};
    return group;
  };
}

/// Separate triangles in a row, `spacing` apart, each with a material out of `materials`.
Make Row(float spacing, std::size_t materials) {
  return [=](std::size_t count) {
    GeometryGroup group;
    group.surfaceSets.resize(1);
    for (std::uint32_t f = 0; f < count; ++f) {
      const float x = spacing * static_cast<float>(f);
      GroupFace& face = group.faces.At(f);
      face.material = static_cast<std::int32_t>(f % materials);
      face.surfaceSet = 0;
      const std::array<Point3, 3> corners{Point3{x, 0, 0}, {x + 8.0f, 0, 0}, {x, 8.0f, 0}};
      for (std::uint32_t k = 0; k < 3; ++k) {
        face.v[k] = face.a[k] = 3 * f + k;
        group.vertices.Append(corners[k]);
        VertexAttribute attribute;
        attribute.position = corners[k];
        attribute.material = face.material;
        group.attributes.Append(attribute);
      }
      group.surfaceSets[0].faces.Append(f);
    }
    group.boundsMax = {spacing * static_cast<float>(count), 8.0f, 0.0f};
    group.boundsMin = {};
    return group;
  };
}

/// Flat ground in one cell; every corner has its own attribute, which matches all others at its
/// vertex.
GeometryGroup RepeatedCorners(std::size_t count) {
  GeometryGroup group;
  group.surfaceSets.resize(1);
  const auto edge = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(count) / 2.0));
  for (std::uint32_t y = 0; y <= edge; ++y) {
    for (std::uint32_t x = 0; x <= edge; ++x) {
      group.vertices.Append({10.0f * static_cast<float>(x), 10.0f * static_cast<float>(y), 0});
    }
  }
  for (std::uint32_t q = 0; q < edge * edge; ++q) {
    const std::uint32_t a = q / edge * (edge + 1) + q % edge;
    const std::uint32_t b = a + edge + 1;
    for (const auto& corners : {std::array{a, a + 1, b + 1}, std::array{a, b + 1, b}}) {
      const auto f = static_cast<std::uint32_t>(group.faces.size());
      GroupFace& face = group.faces.At(f);
      face.v = corners;
      face.surfaceSet = 0;
      group.surfaceSets[0].faces.Append(f);
      for (std::size_t k = 0; k < 3; ++k) {
        face.a[k] = static_cast<std::uint32_t>(group.attributes.size());
        VertexAttribute attribute;
        attribute.position = group.vertices[corners[k]];
        group.attributes.Append(attribute);
      }
    }
  }
  group.boundsMin = {};
  group.boundsMax = {10.0f * static_cast<float>(edge), 10.0f * static_cast<float>(edge), 0.0f};
  return group;
}

// --- passes ------------------------------------------------------------------------------------

Pass Weld(float distance) {
  return [=](GeometryGroup& group) {
    if (WeldVertices(group, distance)) RemoveDegenerateFaces(group);
  };
}

/// With the grid that an earlier export can leave behind: a tenth of the group's bounds.
void Clean(GeometryGroup& group) {
  CleanVertexAttributes(group, (group.boundsMax - group.boundsMin) * 0.1f);
}

void Batch(GeometryGroup& group) {
  const VoxelGrid grid(group, 1000.0f);
  BuildRenderBatches(group, BuildVoxelPartition(group, grid, State().random),
                     State().currentScene->materials);
}

}  // namespace

std::vector<HardGroup> HardGroups() {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  return {
      {"weld, all vertices equal", Cloud(0.0f), Weld(kWeldDistance), 200000},
      {"weld, all in one cell", Cloud(kWeldDistance), Weld(kWeldDistance), 200000},
      {"weld, dense cloud", Cloud(4.0f), Weld(kWeldDistance), 200000},
      {"weld, chain at the distance", Vertices([](std::size_t i) {
         return Point3{static_cast<float>(i) * kWeldDistance, 0, 0};
       }),
       Weld(kWeldDistance), 200000},
      {"weld, lattice at the distance", Lattice, Weld(kWeldDistance), 200000},
      {"weld, satellites of one place", Satellites, Weld(kWeldDistance), 200000},
      {"weld, far away", Cloud(1e30f), Weld(kWeldDistance), 200000},
      {"weld, huge distance", Cloud(1000.0f), Weld(1e12f), 200000},
      {"weld, infinite distance", Cloud(1000.0f), Weld(kInfinity), 200000},
      {"weld, fan", Fan(1, 0.0f), Weld(kWeldDistance), 100000},
      {"clean, all corners match", RepeatedCorners, Clean, 100000},
      {"clean, fan of two that match", Fan(2, 0.001f), Clean, 50000},
      {"clean, fan of a hundred in a row", Fan(100, 0.006f), Clean, 10000},
      {"clean, fan of attributes in a row", Fan(kAllDifferent, 0.006f), Clean, 4000, true},
      {"clean, fan without a match", Fan(kAllDifferent, 0.02f), Clean, 10000},
      {"batches, one attribute at a hub", Fan(1, 0.0f), Batch, 100000},
      {"batches, two attributes at a hub", Fan(2, 1.0f), Batch, 100000},
      {"batches, all attributes at a hub differ", Fan(kAllDifferent, 1.0f), Batch, 8000, true},
      {"batches, a cell for every face", Row(1000.0f, 1), Batch, 100000},
      {"batches, a thousand materials in turn", Row(0.01f, 1000), Batch, 100000},
      {"batches, a material for every face", Row(0.01f, kHardMaterials), Batch, 100000},
  };
}

}  // namespace mapexport
