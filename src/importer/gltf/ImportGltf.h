// glTF files into the host's scene.
#pragma once

#include "importer/ImportOptions.h"

namespace mapexport {

class GltfFile;
struct ImportedScene;
struct LeftOut;

/// Makes of `file`, which is not of version 1, the materials and the nodes below the root of
/// `result`; adds its remarks and side files, and counts in `leftOut` what the host's scene can't
/// hold. Of several scenes it is the default one, else the first; without any, all nodes are in it.
/// Nodes without a name are called "nodes[N]", or like their parent when they only hold its mesh.
/// The user property text of a node is that of its extras and of its mesh's (UserText). Throws
/// SceneError, and std::range_error for a scale that takes a number beyond 32-bit floats.
void ImportGltf(const GltfFile& file, const ImportOptions& options, ImportedScene& result,
                LeftOut& leftOut);

}  // namespace mapexport
