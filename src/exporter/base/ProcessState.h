// Every process-wide object of the exporter, in one place.
#pragma once

#include <array>
#include <optional>

#include "exporter/base/DebugLog.h"
#include "exporter/base/ExportOptions.h"
#include "exporter/base/RandomGenerator.h"
#include "exporter/base/TextureNames.h"
#include "host/Interface.h"
#include "host/Resources.h"

namespace mapexport {

class ExportModel;

/// What lives from the library's load to its unload. There is one thread, and one export at a time.
struct ProcessState {
  // The library itself.
  HINSTANCE module = nullptr;  ///< the library's handle, null before its entry function ran
  bool initialised = false;    ///< the entry function has run once
  std::array<char, 256> stringBuffer{};  ///< the resource text read last

  // The export.
  ExportOptions options;
  std::optional<DebugLog> debugLog;       ///< made on first use; ask DebugLog::Instance
  Interface* currentInterface = nullptr;  ///< host of the latest export; never cleared
  TimeValue currentTime = 0;              ///< everything of the export is evaluated at this time
  ExportModel* currentScene = nullptr;    ///< model of the running export, null outside of a run
  TextureNames transparentTextures;       ///< of the CXP database read last
  RandomGenerator random{0};              ///< seeded at load with the system's tick count
  Point3 voxelCellSize;  ///< cell size per axis of the voxel grid built last; 0 before
};

/// The one state; made when the library is loaded, without asking anything of the host.
ProcessState& State();

}  // namespace mapexport
