// One bit of the host's smoothing groups for each group of faces.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "host/Mesh.h"

namespace mapexport {

inline constexpr unsigned kFirstSmoothingBit = 1;  ///< bit 0 alone means "flat" to some exporters
inline constexpr unsigned kLastSmoothingBit = 31;
inline constexpr std::uint32_t kFlatFace = std::numeric_limits<std::uint32_t>::max();

/// Sets the smoothing groups of all faces of `mesh`: faces with the same number in `groupOf` (one
/// per face) get the same bit, those with kFlatFace get 0. Groups that meet at a vertex get
/// different bits as long as these suffice; others may share one. Groups choose in the order of
/// their numbers, each the lowest bit that is free. Cost: linear in the faces, the vertices and the
/// highest number.
void AssignSmoothingBits(Mesh& mesh, const std::vector<std::uint32_t>& groupOf);

}  // namespace mapexport
