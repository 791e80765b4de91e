// Reads from a .3ds file what the import library loses of it.
#pragma once

#include <string_view>
#include <vector>

#include "importer/rebuild/FileMaterials.h"
#include "importer/rebuild/FlatFaces.h"

namespace mapexport {

// `bytes` is a whole file, which may be damaged: chunks are read as far as it goes.

/// The materials in the file's order. Percentages of opacity and of the strength of shininess
/// become 0 to 1, those of the shininess stay. Cost: linear in the number of chunks at the upper
/// levels.
std::vector<FileMaterial> Read3dsMaterials(std::string_view bytes);

/// The meshes. The part of faces without a material is kNoPart.
std::vector<FileFaces> Read3dsFaces(std::string_view bytes);

}  // namespace mapexport
