// The triangles of two models, numbered by what they are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// One of something for each of the two models that are compared, the older first.
template <class T>
using Both = std::array<T, 2>;

/// Numbers of a model's materials and of its groups' surface sets in lists that both models share.
struct SharedNumbers {
  std::vector<std::uint32_t> materials;
  std::vector<std::vector<std::uint32_t>> sets;
};

inline constexpr std::uint32_t kNoSet = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoMaterial = 0xFFFFFFFF;
inline constexpr std::uint32_t kUndrawn = 0xFFFFFFFE;

struct ModelTriangle {
  /// The same for triangles of both models whose planes and corners are equal, bit for bit and in
  /// order; a corner is a position, normal, texture coordinates and colour.
  std::uint32_t content = 0;
  std::uint32_t material = kNoMaterial;  ///< shared number; kUndrawn for collision only
  std::uint32_t set = kNoSet;            ///< shared number
  std::uint32_t model = 0;               ///< 0 or 1
  /// Which one of the model's drawn triangles, by group, batch and face, or of its undrawn ones, by
  /// group and face table.
  std::uint32_t index = 0;
  std::array<ModelPoint, 3> points;
};

/// The triangles of both models, sorted by content. Time is n log n, whatever the triangles are.
std::vector<ModelTriangle> NumberTriangles(const Both<const ModelFile*>& models,
                                           const Both<SharedNumbers>& numbers);

}  // namespace mapexport
