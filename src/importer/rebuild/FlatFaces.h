// Faces that a file has in no smoothing group.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace mapexport {

struct LibraryScene;

/// By the library's mesh: which of its faces are flat by the file; empty for a mesh of which that
/// isn't known. The library smooths the faces of .3ds and ASE files that are in no group with all
/// that touch them. Reads the file of `source` again when it is one of these; where its meshes
/// don't match the library's, nothing is known.
std::vector<std::vector<bool>> FlatFaces(const LibraryScene& source);

/// The faces of a mesh of a file, in the file's order.
struct FileFaces {
  static constexpr std::uint32_t kNoPart = 0xFFFF'FFFF;
  struct FileFace {
    bool isFlat = true;            ///< in no smoothing group
    std::uint32_t part = kNoPart;  ///< .3ds: index of the material; ASE: number of the sub-material
  };
  std::vector<FileFace> faces;
  std::uint32_t material = kNoPart;  ///< ASE: the mesh's
};

/// The meshes of a .3ds file. Faces without a material are of kNoPart.
std::vector<FileFaces> ReadFaces3ds(std::string_view bytes);

struct AseFaces {
  std::vector<FileFaces> meshes;
  std::vector<std::uint32_t> subMaterials;  ///< how many each material has
};

/// The meshes of an ASE file.
AseFaces ReadAseFaces(std::string_view text);

}  // namespace mapexport
