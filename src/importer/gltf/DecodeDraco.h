// KHR_draco_mesh_compression.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mapexport {

/// An attribute of a Draco mesh, wanted with these components.
struct DracoAttribute {
  std::uint32_t id = 0;
  int componentType = 0;  ///< of glTF
  std::size_t components = 0;
  std::string bytes;  ///< set by DecodeDraco: an element for each vertex
};

struct DracoMesh {
  std::size_t vertices = 0;
  std::string indices;  ///< 32-bit numbers, three for each triangle, all below `vertices`
};

/// Decodes `data`. Returns what is wrong with it, or nothing, and then has set `mesh` and the bytes
/// of `attributes`.
std::string DecodeDraco(std::string_view data, std::vector<DracoAttribute>& attributes,
                        DracoMesh& mesh);

}  // namespace mapexport
