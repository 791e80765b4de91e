// Levels to measure with: seeded, with the proportions of real ones, in four sizes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// The number of each kind of thing.
struct LevelSize {
  std::string_view name;  ///< approximate number of its triangles
  int patches;            ///< patches along each edge of the terrain
  int rooms;
  int spheres;
  int fences;    ///< two-sided
  int blockers;  ///< "notrendered"
};

/// The sizes of all measurements. Welded at the initial distance, the second one has just less than
/// the 65,536 vertices that a model file can address. The last one is measured only on demand.
inline constexpr std::array<LevelSize, 4> kLevelSizes{{
    {"10k", 3, 5, 3, 1, 1},
    {"130k", 12, 48, 36, 10, 10},
    {"1M", 33, 370, 290, 80, 80},
    {"10M", 104, 3700, 2900, 800, 800},
}};

std::optional<LevelSize> FindLevelSize(std::string_view name);

/// Terrain in patches, rooms of six walls below it, spheres, fences and blockers above it. Every
/// patch and wall is a separate node, whose border vertices are equal to its neighbours' or nearer
/// than the weld distance. Faces are hard and smooth, materials are with and without textures, and
/// some meshes have several materials. The same size and seed give the same scene on every machine.
Scene MakeLevel(const LevelSize& size, std::uint32_t seed);

std::size_t TriangleCount(const Scene& scene);

}  // namespace mapexport
