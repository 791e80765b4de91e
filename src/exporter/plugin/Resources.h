// The library's resources: texts, the options dialog, the progress cursors.
#pragma once

#include "host/Resources.h"

namespace mapexport {

/// Everything the library carries, for the host to know at load.
extern const ModuleResources kResources;

}  // namespace mapexport
