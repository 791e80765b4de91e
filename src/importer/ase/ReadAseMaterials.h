// Reads the materials of an .ase file.
#pragma once

#include <string_view>
#include <vector>

#include "importer/rebuild/FileMaterials.h"

namespace mapexport {

/// The materials in `text`, a whole .ase file, in its order: each one of the list, then its
/// sub-materials. What can't be read of a damaged file is left out. Cost: linear.
std::vector<FileMaterial> ReadAseMaterials(std::string_view text);

}  // namespace mapexport
