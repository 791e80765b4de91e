// Reads from an .ase file what the import library loses of it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "importer/rebuild/FileMaterials.h"
#include "importer/rebuild/FlatFaces.h"

namespace mapexport {

// `text` is a whole file. Cost: linear in its size.

/// The materials in the file's order: each one of the list, then its sub-materials. Of a damaged
/// file, those that can be read.
std::vector<FileMaterial> ReadAseMaterials(std::string_view text);

struct AseFaces {
  std::vector<FileFaces> meshes;
  std::vector<std::uint32_t> subMaterials;  ///< how many each material has
};

/// The meshes of the objects.
AseFaces ReadAseFaces(std::string_view text);

/// Red, green and blue by the bytes of the object's name. Of equal names the first one counts.
using WireColours = std::unordered_map<std::string, std::array<std::uint8_t, 3>>;

/// The wire colours of the objects.
WireColours ReadAseWireColours(std::string_view text);

/// By how much the braces of `line`, except those in quotes, change the depth of the blocks.
int AseDepthChange(std::string_view line);

}  // namespace mapexport
