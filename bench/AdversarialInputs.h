// Inputs that are hard for grids and hash tables.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "geometry/GeometryGroup.h"
#include "scene/Scene.h"

namespace mapexport {

/// A family of groups by their size, and the pass that has to cope with them.
struct HardGroup {
  std::string name;
  std::function<GeometryGroup(std::size_t size)> make;
  std::function<void(GeometryGroup&)> pass;
  std::size_t size;
  bool isForced = false;  ///< the definition asks for a quadratic number of comparisons
};

/// The same for scenes, to be gathered.
struct HardScene {
  std::string name;
  std::function<Scene(std::size_t size)> make;
  std::size_t size;
  bool isForced = false;
};

std::vector<HardGroup> HardGroups();
std::vector<HardScene> HardScenes();

}  // namespace mapexport
