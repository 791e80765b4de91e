// Reads the materials of a .3ds file.
#pragma once

#include <string_view>
#include <vector>

#include "importer/rebuild/FileMaterials.h"

namespace mapexport {

/// The materials in `bytes`, a whole .3ds file, in its order. Percentages of opacity and of the
/// strength of shininess become 0 to 1, those of the shininess stay. What lies beyond the end of a
/// damaged file isn't there. Cost: linear in the number of chunks at the upper levels.
std::vector<FileMaterial> Read3dsMaterials(std::string_view bytes);

}  // namespace mapexport
