// The nodes, meshes and materials of a scene that the library has read.
#pragma once

namespace mapexport {

struct ImportedScene;
struct ImportOptions;
struct LeftOut;
struct LibraryScene;

/// Makes of `source` the materials and the nodes below the root of `result`, adds its remarks and
/// side files, and counts in `leftOut` what the host's scene can't hold. Nothing in the library's
/// scene is trusted. What the library loses is taken from the file at source.path. Throws
/// SceneError, and std::range_error for a scale that takes a number beyond 32-bit floats.
void RebuildScene(const LibraryScene& source, const ImportOptions& options, ImportedScene& result,
                  LeftOut& leftOut);

}  // namespace mapexport
