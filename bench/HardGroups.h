// Groups that are hard for the grids and hash tables of the passes.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// A family of groups, by their size, and the pass that they are hard for.
struct HardGroup {
  std::string name;
  std::function<GeometryGroup(std::size_t size)> make;
  std::function<void(GeometryGroup&)> pass;
  std::size_t size;
  bool isForced = false;  ///< the definition takes a quadratic number of comparisons
};

/// The faces' materials are below this number.
inline constexpr std::size_t kHardMaterials = 200000;

std::vector<HardGroup> HardGroups();

}  // namespace mapexport
