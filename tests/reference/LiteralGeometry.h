// The literal definitions of what src/exporter/geometry does faster: scans, lists, a dense voxel
// grid.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <list>
#include <vector>

#include "exporter/base/RandomGenerator.h"
#include "exporter/geometry/GeometryGroup.h"
#include "exporter/materials/MaterialsList.h"

namespace mapexport::literal {

inline int AddAttribute(std::vector<VertexAttribute>& attributes, const VertexAttribute& x) {
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    if (AttributesMatch(x, attributes[i])) return static_cast<int>(i);
  }
  attributes.push_back(x);
  return static_cast<int>(attributes.size() - 1);
}

/// Normal of corner `k` of faces[f], by a scan of all faces of the node.
inline Point3 CornerNormal(const std::vector<GroupFace>& faces, std::size_t f, std::size_t k) {
  const GroupFace& face = faces[f];
  if (face.smoothing == 0) return face.normal;
  Point3 sum = face.normal;
  for (std::size_t g = 0; g < faces.size(); ++g) {
    const GroupFace& other = faces[g];
    if (g == f || (other.smoothing & face.smoothing) == 0) continue;
    if (std::ranges::find(other.v, face.v[k]) != other.v.end()) sum = sum + other.normal;
  }
  return Normalize(sum);
}

/// Voxel grid with every cell in memory; only for small counts.
class DenseVoxels {
 public:
  DenseVoxels(const GeometryGroup& group, float voxelSize, RandomGenerator& random)
      : min_(Axes(group.boundsMin)) {
    const std::array<float, 3> max = Axes(group.boundsMax);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const float extent = max[axis] - min_[axis];
      const float quotient = extent / voxelSize;
      n_[axis] =
          std::isfinite(quotient) ? static_cast<int>(std::max(1.0f, std::ceil(quotient))) : 1;
      size_[axis] = extent / static_cast<float>(n_[axis]);
    }
    cells.resize(static_cast<std::size_t>(n_[0]) * static_cast<std::size_t>(n_[1]) *
                 static_cast<std::size_t>(n_[2]));
    for (std::uint32_t f = 0; f < group.faces.size(); ++f) Assign(group, f, random);
  }

  std::vector<std::vector<std::uint32_t>> cells;  ///< faces per cell, x-major

 private:
  using Cell = std::array<int, 3>;

  static std::array<float, 3> Axes(const Point3& p) { return {p.x, p.y, p.z}; }

  Cell CellOf(const Point3& p) const {
    Cell cell{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const float c = (Axes(p)[axis] - min_[axis]) / size_[axis];
      if (!(c > 0.0f)) continue;
      cell[axis] = c >= static_cast<float>(n_[axis]) ? n_[axis] - 1 : static_cast<int>(c);
    }
    return cell;
  }
  std::size_t Index(const Cell& c) const {
    const int index = (c[0] * n_[1] + c[1]) * n_[2] + c[2];
    return static_cast<std::size_t>(index);
  }

  void Assign(const GeometryGroup& group, std::uint32_t f, RandomGenerator& random) {
    std::array<Point3, 3> p;
    const GroupFace& face = group.faces[f];
    for (std::size_t k = 0; k < 3; ++k) {
      p[k] = face.drawn != 0 ? group.vertices[face.v[k]] : group.collisionPoints[face.v[k]];
    }
    Cell lo = CellOf(p[0]);
    Cell hi = lo;
    for (const Point3& corner : p) {
      const Cell c = CellOf(corner);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        lo[axis] = std::min(lo[axis], c[axis]);
        hi[axis] = std::max(hi[axis], c[axis]);
      }
    }
    if (lo == hi) {
      cells[Index(lo)].push_back(f);
      return;
    }
    std::vector<int> votes(cells.size(), 0);
    for (int i = 0; i < 10; ++i) {
      float r1 = random.Uniform(0, 1);
      float r2 = random.Uniform(0, 1);
      if (r1 + r2 > 1.0f) {
        r1 = 1.0f - r1;
        r2 = 1.0f - r2;
      }
      Cell c = CellOf(p[0] * (1.0f - r1 - r2) + p[1] * r1 + p[2] * r2);
      for (std::size_t axis = 0; axis < 3; ++axis)
        c[axis] = std::clamp(c[axis], lo[axis], hi[axis]);
      ++votes[Index(c)];
    }
    const auto most = std::ranges::max_element(votes);
    cells[static_cast<std::size_t>(most - votes.begin())].push_back(f);
  }

  std::array<float, 3> min_;
  std::array<float, 3> size_{};
  std::array<int, 3> n_{};
};

/// A batch with lists of its own.
struct Batch {
  std::int32_t material = -1;
  std::int32_t key = -1;
  std::vector<std::uint32_t> faces, cornerVertices, cornerAttributes;

  bool operator==(const RenderBatch& built) const {
    return built.material == material && built.key == key &&
           std::ranges::equal(built.faces, faces) &&
           std::ranges::equal(built.cornerVertices, cornerVertices) &&
           std::ranges::equal(built.cornerAttributes, cornerAttributes);
  }
};

inline bool CanAddFace(const Batch& batch, const GroupFace& face, std::int32_t key) {
  if (batch.key != key) return false;
  for (std::size_t i = 0; i < batch.cornerVertices.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (batch.cornerVertices[i] == face.v[k] && batch.cornerAttributes[i] != face.a[k]) {
        return false;
      }
    }
  }
  return true;
}

inline void AddFace(Batch& batch, const GroupFace& face, std::uint32_t f) {
  for (std::size_t k = 0; k < 3; ++k) {
    bool found = false;
    for (std::size_t i = 0; i < batch.cornerVertices.size(); ++i) {
      found |= batch.cornerVertices[i] == face.v[k] && batch.cornerAttributes[i] == face.a[k];
    }
    if (found) continue;
    batch.cornerVertices.push_back(face.v[k]);
    batch.cornerAttributes.push_back(face.a[k]);
  }
  batch.faces.push_back(f);
}

/// The group's batch list from the cells of a dense grid.
inline std::list<Batch> Batches(const GeometryGroup& group, const MaterialsList& materials,
                                const std::vector<std::vector<std::uint32_t>>& cells) {
  std::list<Batch> list;
  for (const auto& cell : cells) {
    std::list<Batch> own;
    for (const std::uint32_t f : cell) {
      const GroupFace& face = group.faces[f];
      if (face.drawn == 0) continue;
      const std::int32_t key = materials.IsTransparent(face.material) ? face.nodeIndex : -1;
      auto batch = std::ranges::find_if(own, [&](const Batch& b) {
        return b.material == face.material && CanAddFace(b, face, key);
      });
      if (batch == own.end()) {
        batch = own.emplace(own.end());
        batch->material = face.material;
        batch->key = key;
      }
      AddFace(*batch, face, f);
    }
    for (const Batch& batch : own) {
      const auto place = std::ranges::find(list, batch.material, &Batch::material);
      list.insert(place == list.end() ? list.begin() : place, batch);
    }
  }
  return list;
}

}  // namespace mapexport::literal
