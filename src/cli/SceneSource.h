// A scene to load, and how.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "importer/ImportOptions.h"

namespace mapexport {

struct SceneSource {
  std::string path;
  // For foreign formats only.
  ImportOptions import;
  std::optional<std::uint32_t> seconds;  ///< of processor time; 0: no limit; none: ReadSeconds
};

}  // namespace mapexport
