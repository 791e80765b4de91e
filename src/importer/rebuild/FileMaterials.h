// Materials as the file defines them, where the import library loses or changes values.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/Types.h"

namespace mapexport {

struct LibraryScene;

/// A material of a .3ds or .ase file. Values that the file doesn't have are empty.
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

/// The materials of the file of `source` by the library's index; empty where the file has none that
/// matches. The library keeps the file's order but may leave materials out; materials with equal
/// names are matched by their diffuse colours. All are empty for formats of which the library loses
/// nothing.
std::vector<std::optional<FileMaterial>> ReadFileMaterials(const LibraryScene& source);

}  // namespace mapexport
