// What a file itself says of its materials, where the import library loses or changes it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/Types.h"

namespace mapexport {

struct LibraryScene;

/// A material of a .3ds or .ase file. What the file doesn't say is empty.
struct FileMaterial {
  std::string name;  ///< bytes of the file
  std::optional<Color> ambient;
  std::optional<Color> diffuse;
  std::optional<float> opacity;
  std::optional<float> shininess;
  std::optional<float> shininessStrength;
  std::optional<int> shading;  ///< in the numbers of the import library
  bool twoSided = false;
};

/// The materials of the file that gave `source`, by the library's index: each one where the file
/// has it, empty where it doesn't or isn't what the library made of it. The library keeps the
/// file's order and may leave materials out; those of equal names are told apart by their diffuse
/// colours. All are empty for formats of which the library loses nothing.
std::vector<std::optional<FileMaterial>> ReadFileMaterials(const LibraryScene& source);

}  // namespace mapexport
