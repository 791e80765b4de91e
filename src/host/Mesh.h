// A triangle mesh as the host hands it out for rendering.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

/// One triangle of a host mesh.
struct Face {
  std::array<std::uint32_t, 3> v{};  ///< indices into Mesh::verts
  std::uint32_t smGroup = 0;         ///< smoothing-group bits
  std::uint32_t flags = 0;           ///< the high 16 bits are the material ID

  std::uint16_t MatID() const { return static_cast<std::uint16_t>(flags >> 16); }
  void SetMatID(std::uint16_t id) { flags = (flags & 0xFFFFu) | (std::uint32_t{id} << 16); }

  friend bool operator==(const Face&, const Face&) = default;
};

/// The texture corners of one triangle.
struct TVFace {
  std::array<std::uint32_t, 3> t{};  ///< indices into Mesh::tVerts

  friend bool operator==(const TVFace&, const TVFace&) = default;
};

/// A triangle mesh in object space. The host promises that every index is in range, and that
/// `tvFace` has exactly one entry per face whenever `tVerts` is not empty.
struct Mesh {
  std::vector<Point3> verts;
  std::vector<Face> faces;
  std::vector<Point3> tVerts;  ///< texture vertices (u, v, w), v up; empty: no texture coordinates
  std::vector<TVFace> tvFace;
};

}  // namespace mapexport
