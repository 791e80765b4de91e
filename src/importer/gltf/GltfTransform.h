// Transforms as glTF stores them.
#pragma once

#include <array>

#include "importer/rebuild/AffineMatrix.h"

namespace mapexport {

/// `columns` are those of a 4x4 matrix, one after the other; its last row means nothing.
AffineMatrix AffineFromColumns(const std::array<float, 16>& columns);

/// Scales, rotates and then moves; `rotation` is a quaternion x, y, z, w of any length.
AffineMatrix AffineFromParts(const std::array<float, 3>& translation,
                             const std::array<float, 4>& rotation,
                             const std::array<float, 3>& scale);

}  // namespace mapexport
