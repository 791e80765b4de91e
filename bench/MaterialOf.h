// The materials of faces, without the host's layer of sub-materials.
#pragma once

#include "scene/Scene.h"

namespace mapexport {

/// The index of the standard material of a face; -1 for none.
inline int MaterialOf(const Scene& scene, const SceneNode& node, const Face& face) {
  if (node.material < 0) return -1;
  const SceneMaterial& material = scene.materials[static_cast<std::size_t>(node.material)];
  if (material.materialClass != SceneMaterialClass::kMulti) return node.material;
  return material.subMaterials.at(face.MatID());
}

}  // namespace mapexport
