// Turns foreign materials into the host's Standard materials.
#pragma once

#include <vector>

#include "scene/Scene.h"

namespace mapexport {

struct LibraryScene;

struct ImportedMaterials {
  std::vector<SceneMaterial> materials;
  /// By the library's material index: the index in `materials`, -1 for the material that a reader
  /// gives to meshes without one.
  std::vector<int> hostIndex;
};

/// All materials of `source`, in its order. One without a name is called "Material N" (N from 1),
/// because exporters take equal names for one material. Colours and scalars that aren't finite
/// become 0; the opacity is clamped to 0 to 1.
ImportedMaterials ImportMaterials(const LibraryScene& source);

}  // namespace mapexport
