// The running export's materials, for the rooms below the export model.
#pragma once

#include "exporter/materials/MaterialsList.h"

namespace mapexport {

/// The materials list of the current scene. Only during a run; the export model provides it.
MaterialsList& SceneMaterials();

}  // namespace mapexport
