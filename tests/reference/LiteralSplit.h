// What the groups of a model must hold, however its faces are divided among them: every face once,
// with all that an engine sees of it.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "exporter/geometry/CollisionLists.h"
#include "exporter/geometry/FaceFlags.h"
#include "exporter/geometry/GeometryGroup.h"
#include "modelreader/ModelFile.h"

namespace mapexport::literal {

/// Material, flags and set, plane, then position, normal, texture coordinates and colour of each
/// corner, as bits; zeros for what the layout does not have.
using FaceBits = std::array<std::uint32_t, 3 + 4 + 3 * 12>;

class FaceBitsWriter {
 public:
  FaceBitsWriter& Add(float number) {
    return Add(std::isnan(number) ? 0x7FC00000u : std::bit_cast<std::uint32_t>(number));
  }
  FaceBitsWriter& Add(std::uint32_t number) {
    bits_[used_++] = number;
    return *this;
  }
  template <typename Point>
  FaceBitsWriter& AddPoint(const Point& p) {
    return Add(p.x).Add(p.y).Add(p.z);
  }
  FaceBitsWriter& AddHead(std::int32_t material, std::uint32_t flags, std::string_view set) {
    return Add(static_cast<std::uint32_t>(material))
        .Add(flags)
        .Add(static_cast<std::uint32_t>(std::hash<std::string_view>()(set)));
  }
  template <typename Plane>
  FaceBitsWriter& AddPlane(const Plane& plane) {
    return AddPoint(plane.normal).Add(plane.d);
  }
  /// What the layout says of a corner besides its position.
  template <typename Point, typename Colour>
  FaceBitsWriter& AddLook(const Point& normal, float u, float v, const Colour& c) {
    return AddPoint(normal).Add(u).Add(v).Add(c.r).Add(c.g).Add(c.b).Add(c.a);
  }
  void SkipLook() { used_ += 9; }
  const FaceBits& Bits() const { return bits_; }

 private:
  FaceBits bits_{};
  std::size_t used_ = 0;
};

/// The faces of a group before it is written, sorted.
inline std::vector<FaceBits> FacesOf(const GeometryGroup& group, bool hasFaceTable) {
  std::vector<FaceBits> faces;
  for (const GroupFace& face : group.faces) {
    const SurfaceSet& set = group.surfaceSets[static_cast<std::size_t>(face.surfaceSet)];
    const bool drawn = !hasFaceTable || (set.flags & kFlagNotRendered) == 0;
    FaceBitsWriter bits;
    bits.AddHead(drawn ? face.material : -1, hasFaceTable ? set.flags : 0,
                 hasFaceTable ? set.name.View() : "");
    bits.AddPlane(PlaneOf(face.normal, group.vertices[face.v[0]]));
    for (std::size_t k = 0; k < 3; ++k) {
      bits.AddPoint(group.vertices[face.v[k]]);
      const VertexAttribute& a = group.attributes[face.a[k]];
      if (drawn) {
        bits.AddLook(a.normal, a.uvw.x, a.uvw.y, a.colour);
      } else {
        bits.SkipLook();
      }
    }
    faces.push_back(bits.Bits());
  }
  std::ranges::sort(faces);
  return faces;
}

/// The faces of all groups of a file whose indices are whole, sorted.
inline std::vector<FaceBits> FacesOf(const ModelFile& model) {
  std::vector<FaceBits> faces;
  const auto addDrawn = [&](FaceBitsWriter& bits, const ModelGroup& group, const ModelBatch& batch,
                            const ModelBatchFace& face) {
    bits.AddPlane(face.plane);
    for (std::size_t k = 0; k < 3; ++k) {
      const ModelCorner& corner = batch.corners[face.corners[k]];
      bits.AddPoint(group.vertices[face.vertices[k]]);
      bits.AddLook(corner.normal, corner.u, corner.v, corner.colour);
    }
    faces.push_back(bits.Bits());
  };
  for (const ModelGroup& group : model.groups) {
    if (model.layout == ModelLayout::kQob) {
      for (const ModelBatch& batch : group.batches) {
        for (const ModelBatchFace& face : batch.faces) {
          FaceBitsWriter bits;
          addDrawn(bits.AddHead(batch.material, 0, ""), group, batch, face);
        }
      }
    }
    for (const ModelFace& face : group.faces) {
      const ModelSurfaceSet& set = group.surfaceSets[face.surfaceSet];
      FaceBitsWriter bits;
      if (face.batch >= 0) {
        const ModelBatch& batch = group.batches[static_cast<std::size_t>(face.batch)];
        bits.AddHead(batch.material, set.flags, set.name);
        addDrawn(bits, group, batch, batch.faces[face.position]);
        continue;
      }
      bits.AddHead(-1, set.flags, set.name).AddPlane(group.planes[face.position]);
      for (const std::uint16_t point : face.vertices) {
        bits.AddPoint(group.collisionPoints[point]);
        bits.SkipLook();
      }
      faces.push_back(bits.Bits());
    }
  }
  std::ranges::sort(faces);
  return faces;
}

}  // namespace mapexport::literal
