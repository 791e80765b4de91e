// What of a foreign scene the host's scene can't hold.
#pragma once

#include <cstddef>
#include <string>

namespace mapexport {

/// Counts of what the importer leaves out or has to replace. A mesh that several nodes share counts
/// once.
struct LeftOut {
  std::size_t points = 0;
  std::size_t lines = 0;
  std::size_t polygons = 0;        ///< that the library could not triangulate
  std::size_t vertices = 0;        ///< with a coordinate that isn't finite
  std::size_t faces = 0;           ///< triangles with such a corner, or one that isn't there
  std::size_t textureCorners = 0;  ///< texture coordinates that aren't finite: 0 stands for them
  std::size_t transforms = 0;      ///< of nodes, not finite: the parent's stands for them
  std::size_t meshes = 0;          ///< that nodes name and the file doesn't have
  std::size_t bones = 0;
  std::size_t cameras = 0;
  std::size_t lights = 0;

  /// All of it in one line; empty when nothing is left out.
  std::string Summary() const;
};

}  // namespace mapexport
