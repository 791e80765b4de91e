// Finds the faces that a file has in no smoothing group.
#pragma once

#include <cstdint>
#include <vector>

namespace mapexport {

struct LibraryScene;

/// For each mesh of the library which of its faces are flat in the file; empty for a mesh when that
/// is not known. The library smooths the faces of .3ds and ASE files that are in no group with all
/// faces that touch them. Reads the file of `source` again if it is one of these; nothing is known
/// if its meshes don't match the library's.
std::vector<std::vector<bool>> FlatFaces(const LibraryScene& source);

/// The faces of a mesh of a file, in the file's order.
struct FileFaces {
  static constexpr std::uint32_t kNoPart = 0xFFFF'FFFF;
  struct FileFace {
    bool isFlat = true;            ///< in no smoothing group
    std::uint32_t part = kNoPart;  ///< .3ds: index of the material; ASE: number of the sub-material
  };
  std::vector<FileFace> faces;
  std::uint32_t material = kNoPart;  ///< ASE: the material of the mesh
};

}  // namespace mapexport
