// One triangle of a geometry group.
#pragma once

#include <array>
#include <cstdint>

#include "host/Point3.h"

namespace mapexport {

/// A triangle. Copying and moving it leaves out the scratch fields visitStamp, batchIndex, drawn
/// and batchPosition: they belong to the place in the list, not to the face. Of the place in its
/// batch a face keeps the 16 bits that are written.
struct GroupFace {
  std::array<std::uint32_t, 3> v{};  ///< vertex indices into the group's vertices
  std::array<std::uint32_t, 3> a{};  ///< attribute indices, one per corner in the order of `v`
  Point3 normal;                     ///< unit face normal
  std::uint32_t smoothing = 0;   ///< smoothing-group bits of the host face, its value 1 stored as 0
  std::int32_t surfaceSet = 0;   ///< index into the group's surface sets
  std::int32_t material = -1;    ///< index into the scene's materials, -1 for none
  std::int32_t visitStamp = 0;   ///< scratch of the literal attribute cleaning
  std::int32_t batchIndex = -1;  ///< scratch of writing: the ordinal of its batch, -1 for none
  std::uint8_t drawn = 1;        ///< scratch of writing: 0 for a collision-only face
  std::uint16_t batchPosition = 0xFFFF;  ///< scratch of writing: place in its batch
  std::int32_t nodeIndex = -1;           ///< which mesh of the group the face came from

  GroupFace() = default;
  ~GroupFace() = default;
  GroupFace(const GroupFace& other) { *this = other; }
  GroupFace(GroupFace&& other) noexcept { *this = other; }
  GroupFace& operator=(const GroupFace& other) {
    v = other.v;
    a = other.a;
    normal = other.normal;
    smoothing = other.smoothing;
    surfaceSet = other.surfaceSet;
    material = other.material;
    nodeIndex = other.nodeIndex;
    return *this;
  }
  GroupFace& operator=(GroupFace&& other) noexcept { return *this = other; }
};

}  // namespace mapexport
