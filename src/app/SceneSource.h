// A scene to load, and how.
#pragma once

#include <cstdint>
#include <string>

#include "importer/ImportOptions.h"

namespace mapexport {

/// Processor time that reading a foreign scene may take unless the person says otherwise.
inline constexpr std::uint32_t kReadSeconds = 45;

struct SceneSource {
  std::string path;
  // For foreign formats only.
  ImportOptions import;
  std::uint32_t seconds = kReadSeconds;  ///< of processor time; 0: no limit
};

}  // namespace mapexport
