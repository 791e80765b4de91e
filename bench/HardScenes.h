// Scenes that are hard to gather.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// A family of scenes, by their size.
struct HardScene {
  std::string name;
  std::function<Scene(std::size_t size)> make;
  std::size_t size;
  bool isForced = false;  ///< the definition takes a quadratic number of additions
};

std::vector<HardScene> HardScenes();

}  // namespace mapexport
