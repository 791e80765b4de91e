// The meshes that a level is made of.
#pragma once

#include <cstdint>
#include <random>

#include "host/Mesh.h"

namespace mapexport {

using LevelRandom = std::mt19937;

/// A number from 0 to below 1, the same on every platform.
inline float Unit(LevelRandom& random) {
  return static_cast<float>(random() >> 8) * 0x1p-24f;
}

inline constexpr int kPatchQuads = 16;         ///< along an edge of a patch of terrain
inline constexpr float kPatchSize = 800.0f;    ///< the edge of a patch
inline constexpr std::uint16_t kSkirting = 0;  ///< material ID of a wall's lowest row
inline constexpr std::uint16_t kWall = 1;      ///< material ID of the rest

/// Hilly ground. `px` and `py` are the patch's indices; hills continue in its neighbours.
Mesh TerrainPatch(int px, int py, std::uint32_t seed, std::uint32_t smoothing);

/// A flat wall of 8 by 8 quads from the origin along `u` and `v`; its lowest row has a separate
/// material ID.
Mesh RoomWall(const Point3& origin, const Point3& u, const Point3& v, std::uint32_t smoothing);

/// A sphere around the origin; its halves are in different smoothing groups. It has texture
/// coordinates only if it is textured.
Mesh Sphere(float radius, bool isTextured);

/// An upright strip, one quad high.
Mesh Fence(float length, float height);

/// A box of twelve triangles without texture coordinates.
Mesh Box(const Point3& size);

/// Moves the vertices of an open mesh's border by less than half the initial weld distance.
void JitterBorder(Mesh& mesh, LevelRandom& random);

}  // namespace mapexport
