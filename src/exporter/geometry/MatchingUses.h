// The vertices at which attributes can be merged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// An attribute that some faces use at one vertex, where faces also use another one that matches
/// it.
struct AttributeUse {
  std::uint32_t attribute;
  std::uint32_t firstFace;  ///< into MatchingUses::faces
  std::uint32_t endFace;
};

/// Per vertex, the attributes used there that match another one used there. Only these can be
/// merged: most vertices have none.
struct MatchingUses {
  std::vector<AttributeUse> uses;        ///< by vertex, then by attribute
  std::vector<std::uint32_t> faces;      ///< the faces of each use, ascending
  std::vector<std::uint32_t> firstUses;  ///< per vertex its first entry in `uses`, then their count

  std::span<const AttributeUse> At(std::uint32_t vertex) const {
    return std::span(uses).subspan(firstUses[vertex], firstUses[vertex + 1] - firstUses[vertex]);
  }
  std::span<const std::uint32_t> FacesOf(const AttributeUse& use) const {
    return std::span(faces).subspan(use.firstFace, use.endFace - use.firstFace);
  }
};

/// Takes near-linear time in the corners of all faces. What CleanVertexAttributes does with them is
/// defined in tests/reference/LiteralCleanVertexAttributes.h.
MatchingUses FindMatchingUses(const GeometryGroup& group);

}  // namespace mapexport
