#include "LevelGroup.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace mapexport {
namespace {

constexpr std::uint32_t kPatchQuads = 16;  // along an edge of a patch
constexpr std::uint32_t kPatchVertices = (kPatchQuads + 1) * (kPatchQuads + 1);
constexpr float kQuadSize = 10.0f;

Point3 GroundAt(std::size_t x, std::size_t y) {
  const float fx = static_cast<float>(x) * kQuadSize;
  const float fy = static_cast<float>(y) * kQuadSize;
  return {fx, fy, 40.0f * std::sin(fx * 0.01f) * std::cos(fy * 0.013f)};
}

void AddFace(GeometryGroup& group, const std::array<std::uint32_t, 3>& v, Corners corners) {
  const auto f = static_cast<std::uint32_t>(group.faces.size());
  GroupFace& face = group.faces.At(f);
  face.v = v;
  face.normal = Normalize(CrossProd(group.vertices[v[1]] - group.vertices[v[0]],
                                    group.vertices[v[2]] - group.vertices[v[0]]));
  for (std::size_t k = 0; k < 3; ++k) {
    VertexAttribute attribute;
    attribute.position = group.vertices[v[k]];
    if (corners == Corners::kHard) {
      attribute.normal = face.normal;
      attribute.uvw = {static_cast<float>(f % 64), static_cast<float>(k), 0.0f};
    }
    face.a[k] = static_cast<std::uint32_t>(group.attributes.size());
    group.attributes.Append(attribute);
  }
  group.surfaceSets[f / 1000 % group.surfaceSets.size()].faces.Append(f);
  face.surfaceSet = static_cast<std::int32_t>(f / 1000 % group.surfaceSets.size());
}

}  // namespace

GeometryGroup LevelGroup(std::size_t vertices, Corners corners) {
  GeometryGroup group;
  group.surfaceSets.resize(4);
  const std::size_t patches = std::max<std::size_t>(1, vertices / kPatchVertices);
  const auto patchesPerRow = static_cast<std::size_t>(std::sqrt(static_cast<double>(patches)));
  for (std::size_t patch = 0; patch < patches; ++patch) {
    const auto first = static_cast<std::uint32_t>(group.vertices.size());
    const std::size_t left = patch % patchesPerRow * kPatchQuads;
    const std::size_t bottom = patch / patchesPerRow * kPatchQuads;
    for (std::uint32_t y = 0; y <= kPatchQuads; ++y) {
      for (std::uint32_t x = 0; x <= kPatchQuads; ++x) {
        group.vertices.Append(GroundAt(left + x, bottom + y));
      }
    }
    for (std::uint32_t y = 0; y < kPatchQuads; ++y) {
      for (std::uint32_t x = 0; x < kPatchQuads; ++x) {
        const std::uint32_t corner = first + y * (kPatchQuads + 1) + x;
        const std::uint32_t above = corner + kPatchQuads + 1;
        AddFace(group, {corner, corner + 1, above + 1}, corners);
        AddFace(group, {corner, above + 1, above}, corners);
      }
    }
  }
  const std::size_t rows = (patches - 1) / patchesPerRow + 1;
  const float patchSize = kQuadSize * static_cast<float>(kPatchQuads);
  group.boundsMin = {0.0f, 0.0f, -40.0f};
  group.boundsMax = {patchSize * static_cast<float>(patchesPerRow),
                     patchSize * static_cast<float>(rows), 40.0f};
  return group;
}

}  // namespace mapexport
