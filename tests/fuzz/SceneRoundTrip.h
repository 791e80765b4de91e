// What every scene promises: a scene file can hold it, and gives it back.
#pragma once

#include <sstream>
#include <string>

#include "fuzz/FuzzBytes.h"
#include "fuzz/MemoryFile.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"

namespace mapexport {

inline void RequireRoundTrip(const Scene& scene) {
  const auto written = [](const Scene& what) {
    std::ostringstream out;
    WriteSceneFile(what, out);
    return out.str();
  };
  const std::string once = written(scene);
  const MemoryFile file(once);
  try {
    Require(written(ReadSceneFile(file.Path())) == once, "a scene file gives the scene back");
  } catch (const SceneError& error) {
    Require(false, error.what());
  }
}

}  // namespace mapexport
