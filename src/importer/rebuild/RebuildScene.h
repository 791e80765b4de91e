// Makes the host's nodes, meshes and materials of a scene that the library has read.
#pragma once

namespace mapexport {

struct ImportedScene;
struct ImportOptions;
struct LeftOut;
struct LibraryScene;

/// Adds the materials of `source` and its nodes, below the root, to `result`, with its remarks and
/// side files, and counts in `leftOut` what the host's scene can't hold. The library's scene is
/// untrusted. What the library loses is read from the file at source.path. Throws SceneError, and
/// std::range_error when the scale makes a number too large for 32-bit floats.
void RebuildScene(const LibraryScene& source, const ImportOptions& options, ImportedScene& result,
                  LeftOut& leftOut);

}  // namespace mapexport
