// Reads the materials of an MTL file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// Materials of MTL files.
struct MtlMaterials {
  std::vector<SceneMaterial> materials;
  std::unordered_map<std::string, int> indexOf;  ///< by the bytes of the name in the file
  std::size_t repeated = 0;                      ///< definitions of a name that was defined before
  std::size_t unreadable = 0;                    ///< values that are no numbers, or not finite
};

/// A material of that name with the default values.
SceneMaterial PlainMtlMaterial(std::string_view name);

/// Adds the materials of an MTL file with this text, in the file's order. Of two with the same name
/// the first one counts. The scale (-s) and the offset (-o) of the diffuse map become its UV
/// transform; other options of maps are ignored.
void ReadMtlFile(std::string_view text, MtlMaterials& into);

}  // namespace mapexport
