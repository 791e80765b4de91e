// Which cells an attribute's values lie in, and which other cells their matches can lie in.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {

/// One value of an attribute, and how many cells a unit of its axis is divided into. A cell is
/// wider than the matching tolerance on both of its sides together.
struct AttributeAxis {
  float value;
  double cellsPerUnit;
};

/// The grid is moved by this fraction of a cell: round coordinates would sit on the borders of a
/// grid through the origin.
inline constexpr double kAttributeGridShift = 0.37;

/// From here on neighbouring floats are further apart than the tolerance. Only equal values match,
/// so the value itself is the cell.
inline constexpr float kFarAttributeValue = 524288.0f;  // 2^19

/// The one or two cells of an axis in which the matches of a value can lie.
struct CellsAround {
  explicit CellsAround(const AttributeAxis& axis) {
    if (std::fabs(axis.value) >= kFarAttributeValue) {
      cell = {std::bit_cast<std::uint32_t>(axis.value), 0};
      return;
    }
    const double place = static_cast<double>(axis.value) * axis.cellsPerUnit + kAttributeGridShift;
    const double truncated = static_cast<double>(static_cast<std::int32_t>(place));
    const double own = truncated > place ? truncated - 1.0 : truncated;
    // More than rounding can take away; a cell too many does no harm.
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

  std::array<std::uint32_t, 2> cell{};  ///< coordinates in the grid, the value's own cell first
  int count = 1;
};

inline std::uint64_t MixCell(std::uint64_t hash, std::uint32_t cell) {
  hash = (hash ^ cell) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

/// Calls `visit` with the hash of every cell in which a match can lie: every combination of the
/// axes' cells, the own ones first. No value is NaN.
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
