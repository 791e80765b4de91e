// The cells that attributes are looked up by.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {

/// One value of an attribute, and the cells that it is sorted into: so many per unit, many times as
/// wide as the matching tolerance, so that most values are far from the borders of theirs.
struct AttributeAxis {
  float value;
  double cellsPerUnit;
};

/// Round coordinates sit on the borders of a grid through the origin; this fraction of a cell moves
/// it.
inline constexpr double kAttributeGridShift = 0.37;

/// From here on neighbouring floats are further apart than the tolerance: only equal values match,
/// and each has a cell of its own.
inline constexpr float kFarAttributeValue = 524288.0f;  // 2^19

/// The one or two cells that the values within the tolerance of a value can lie in.
struct CellsAround {
  explicit CellsAround(const AttributeAxis& axis) {
    if (std::fabs(axis.value) >= kFarAttributeValue) {
      cell = {std::bit_cast<std::uint32_t>(axis.value), 0};
      return;
    }
    const double place = static_cast<double>(axis.value) * axis.cellsPerUnit + kAttributeGridShift;
    const double truncated = static_cast<double>(static_cast<std::int32_t>(place));
    const double own = truncated > place ? truncated - 1.0 : truncated;
    // A cell too many does no harm; this is more than rounding can take away.
    constexpr double kMargin = 1e-6;
    const double reach = static_cast<double>(kAttributeTolerance) * axis.cellsPerUnit + kMargin;
    cell[0] = static_cast<std::uint32_t>(static_cast<std::int32_t>(own));
    if (place - own < reach) {
      cell[1] = cell[0] - 1;
      count = 2;
    } else if (place - own > 1.0 - reach) {
      cell[1] = cell[0] + 1;
      count = 2;
    }
  }

  std::array<std::uint32_t, 2> cell{};  ///< the value's own cell first
  int count = 1;
};

inline std::uint64_t MixCell(std::uint64_t hash, std::uint32_t cell) {
  hash = (hash ^ cell) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

/// Calls `visit` with the hash of every cell that a match can lie in, that of the values' own cells
/// first. The values are numbers, if infinite ones.
template <std::size_t kAxes, typename Visit>
void VisitCells(std::uint64_t seed, const std::array<CellsAround, kAxes>& axes,
                const Visit& visit) {
  const auto descend = [&](const auto& self, std::size_t axis, std::uint64_t hash) -> void {
    if (axis == kAxes) {
      visit(hash);
      return;
    }
    for (int i = 0; i < axes[axis].count; ++i) {
      self(self, axis + 1, MixCell(hash, axes[axis].cell[static_cast<std::size_t>(i)]));
    }
  };
  descend(descend, 0, seed);
}

}  // namespace mapexport
