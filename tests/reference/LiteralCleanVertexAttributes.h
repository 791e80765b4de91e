// The attribute cleaning by its definition: buckets of faces, every face with every other in reach.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

inline std::size_t LiteralCleaningCell(float p, float groupMin, float cellSize) {
  if (cellSize == 0.0f) return 0;
  const float cell = std::trunc((p - groupMin) / cellSize);
  if (std::isnan(cell) || cell < 0.0f) return 0;
  return cell > 9.0f ? 9 : static_cast<std::size_t>(cell);
}

/// The buckets that a face is in, x outermost.
inline std::vector<std::size_t> LiteralCleaningBuckets(const GeometryGroup& group,
                                                       const GroupFace& face,
                                                       const Point3& cellSize) {
  std::array<std::size_t, 3> lo{9, 9, 9};
  std::array<std::size_t, 3> hi{0, 0, 0};
  for (const std::uint32_t v : face.v) {
    const Point3& p = group.vertices[v];
    const std::array<std::size_t, 3> cell{LiteralCleaningCell(p.x, group.boundsMin.x, cellSize.x),
                                          LiteralCleaningCell(p.y, group.boundsMin.y, cellSize.y),
                                          LiteralCleaningCell(p.z, group.boundsMin.z, cellSize.z)};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      lo[axis] = std::min(lo[axis], cell[axis]);
      hi[axis] = std::max(hi[axis], cell[axis]);
    }
  }
  std::vector<std::size_t> buckets;
  for (std::size_t x = lo[0]; x <= hi[0]; ++x) {
    for (std::size_t y = lo[1]; y <= hi[1]; ++y) {
      for (std::size_t z = lo[2]; z <= hi[2]; ++z) buckets.push_back(x * 100 + y * 10 + z);
    }
  }
  return buckets;
}

inline void LiteralCleanVertexAttributes(GeometryGroup& group, const Point3& cellSize) {
  auto& faces = group.faces;
  auto& attributes = group.attributes;
  std::vector<std::vector<std::uint32_t>> faceBuckets(1000);
  for (std::uint32_t f = 0; f < faces.size(); ++f) {
    faces[f].visitStamp = 0;
    for (const std::size_t bucket : LiteralCleaningBuckets(group, faces[f], cellSize)) {
      faceBuckets[bucket].push_back(f);
    }
  }
  std::vector<std::uint32_t> target(attributes.size());
  std::iota(target.begin(), target.end(), 0u);
  std::int32_t stamp = 0;
  for (GroupFace& face : faces) {
    face.visitStamp = ++stamp;
    for (const std::size_t bucket : LiteralCleaningBuckets(group, face, cellSize)) {
      for (const std::uint32_t g : faceBuckets[bucket]) {
        GroupFace& other = faces[g];
        if (other.visitStamp == stamp) continue;
        other.visitStamp = stamp;
        for (std::size_t k = 0; k < 3; ++k) {
          for (std::size_t m = 0; m < 3; ++m) {
            const std::uint32_t ia = face.a[k];
            const std::uint32_t ib = other.a[m];
            if (ia != ib && AttributesMatch(attributes[ia], attributes[ib]) &&
                target[ia] != target[ib] && face.v[k] == other.v[m]) {
              if (target[ia] >= target[ib]) {
                target[ia] = target[ib];
              } else {
                target[ib] = target[ia];
              }
            }
          }
        }
      }
    }
  }
  std::uint32_t count = 0;
  for (std::uint32_t i = 0; i < target.size(); ++i) {
    target[i] = target[i] < i ? target[target[i]] : count++;
  }
  std::uint32_t w = 0;
  for (std::uint32_t i = 0; i < target.size(); ++i) {
    if (target[i] == w) attributes[w++] = attributes[i];
  }
  for (GroupFace& face : faces) {
    for (std::uint32_t& a : face.a) a = target[a];
  }
  attributes.Shrink(count);
  group.attributeIndex.Clear();
}

}  // namespace mapexport
