// The descriptor of the library's one class.
#pragma once

#include "host/Plugin.h"

namespace mapexport {

/// The static descriptor of MapExporter. It has no state.
ClassDesc& GetMapExportClassDesc();

}  // namespace mapexport
