// Levels to measure with: seeded, in the proportions of real ones, of three sizes.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// How much there is of each kind of thing.
struct LevelSize {
  std::string_view name;  ///< its triangles, roughly
  int patches;            ///< of the terrain, along each of its edges
  int rooms;
  int spheres;
  int fences;    ///< two-sided
  int blockers;  ///< "notrendered"
};

/// The sizes by which everything is measured. Welded at the initial distance, the middle one has
/// just less than the 65,536 vertices that a model file can address.
inline constexpr std::array<LevelSize, 3> kLevelSizes{{
    {"10k", 3, 5, 3, 1, 1},
    {"130k", 12, 48, 36, 10, 10},
    {"1M", 33, 370, 290, 80, 80},
}};

std::optional<LevelSize> FindLevelSize(std::string_view name);

/// Terrain in patches, rooms of six walls below it, spheres, fences and blockers above it; every
/// patch and wall is a node of its own, with border vertices that lie on its neighbours' or nearer
/// to them than the welding distance. Hard and smooth faces, textured materials and others, faces
/// of several materials in one mesh. The same size and seed give the same scene everywhere.
Scene MakeLevel(const LevelSize& size, std::uint32_t seed);

std::size_t TriangleCount(const Scene& scene);

}  // namespace mapexport
