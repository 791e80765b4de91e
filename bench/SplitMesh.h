// A mesh in the form of formats whose vertices have one normal and one pair of texture coordinates.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

inline constexpr float kUnitsPerMetre = 100.0f;

/// As glTF has it: y up, in metres, v down. A vertex has position, normal and texture coordinates.
struct SplitMesh {
  std::vector<Point3> positions;
  std::vector<Point3> normals;
  std::vector<std::array<float, 2>> uvs;                ///< empty: none
  std::map<int, std::vector<std::uint32_t>> triangles;  ///< corners by material
};

SplitMesh MakeSplitMesh(const Scene& scene, const SceneNode& node);

}  // namespace mapexport
